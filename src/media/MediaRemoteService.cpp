#include "media/MediaRemoteService.h"

#include <QLoggingCategory>
#include <QPointer>

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

Q_LOGGING_CATEGORY(lcMediaRemote, "com.velmora.app.MediaRemote", QtInfoMsg)

constexpr auto startupRetryDelay = 2s;
constexpr auto pollInterval = 1s;

QString text(const QVariantHash &values, const char *key)
{
    const QVariant value = values.value(QLatin1String(key));
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

std::optional<double> number(const QVariantHash &values, const char *key)
{
    const QVariant value = values.value(QLatin1String(key));
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return value.toDouble();
    default:
        return std::nullopt;
    }
}

QImage image(const QVariant &value)
{
    if (value.typeId() == QMetaType::QByteArray) {
        return QImage::fromData(value.toByteArray());
    }
    return value.typeId() == QMetaType::QImage ? value.value<QImage>() : QImage();
}

const char *name(PlaybackCommand command)
{
    switch (command) {
    case PlaybackCommand::play:
        return "play";
    case PlaybackCommand::pause:
        return "pause";
    case PlaybackCommand::togglePlayPause:
        return "togglePlayPause";
    case PlaybackCommand::nextTrack:
        return "nextTrack";
    case PlaybackCommand::previousTrack:
        return "previousTrack";
    case PlaybackCommand::seekToPosition:
        return "seekToPosition";
    }
    return "";
}

template<typename Function>
void logSymbol(const Function &function, const char *symbol)
{
    if (function) {
        qCInfo(lcMediaRemote, "%s resolved", symbol);
    } else {
        qCCritical(lcMediaRemote, "%s symbol not found", symbol);
    }
}

} // namespace

MediaRemoteService::MediaRemoteService(Clock &clock, MediaRemote &remote, const QUrl &searchHost,
                                       QObject *parent)
    : QObject(parent)
    , m_clock(clock)
    , m_nowPlaying(NowPlayingInfo::empty())
    , m_lastSpotifyInfo(NowPlayingInfo::empty())
    , m_artworkLookup(clock, searchHost)
{
    qCInfo(lcMediaRemote, "MediaRemoteService init");
    bind(remote);
    observe(remote);
    refresh();
    m_startupRetry = clock.after(startupRetryDelay, [this] {
        qCDebug(lcMediaRemote, "startup retry refresh");
        refresh();
    });
    m_pollTimer = clock.every(pollInterval, [this] { refresh(); });
}

MediaRemoteService::~MediaRemoteService() = default;

void MediaRemoteService::bind(MediaRemote &remote)
{
    QString error;
    auto functions = remote.load(error);
    if (!functions) {
        qCCritical(lcMediaRemote, "dlopen failed for MediaRemote.framework \u2014 dlerror: %s",
                   error.isEmpty() ? "no reason given" : qUtf8Printable(error));
        return;
    }
    qCInfo(lcMediaRemote, "MediaRemote.framework loaded");
    m_remote = std::move(*functions);
    logSymbol(m_remote.getNowPlayingInfo, "MRMediaRemoteGetNowPlayingInfo");
    logSymbol(m_remote.sendCommand, "MRMediaRemoteSendCommand");
    if (m_remote.registerForNowPlayingNotifications) {
        m_remote.registerForNowPlayingNotifications();
        qCInfo(lcMediaRemote, "MRMediaRemoteRegisterForNowPlayingNotifications called");
    } else {
        qCCritical(lcMediaRemote,
                   "MRMediaRemoteRegisterForNowPlayingNotifications symbol not found");
    }
}

void MediaRemoteService::observe(MediaRemote &remote) const
{
    for (const auto signal : {&MediaRemote::nowPlayingInfoDidChange,
                              &MediaRemote::nowPlayingApplicationIsPlayingDidChange,
                              &MediaRemote::nowPlayingApplicationDidChange}) {
        connect(&remote, signal, this, &MediaRemoteService::handleMediaRemoteChange);
    }
    connect(&remote, &MediaRemote::spotifyPlaybackStateChanged, this,
            &MediaRemoteService::handleSpotifyNotification);
    connect(&remote, &MediaRemote::appleMusicPlayerInfo, this,
            &MediaRemoteService::handleAppleMusicNotification);
}

void MediaRemoteService::refresh()
{
    if (!m_remote.getNowPlayingInfo) {
        qCDebug(lcMediaRemote,
                "refresh called but getNowPlayingInfoFn is nil \u2014 framework not loaded");
        return;
    }
    const QPointer self(this);
    m_remote.getNowPlayingInfo([self](const QVariantHash &answer) {
        if (self) {
            self->apply(answer);
        }
    });
}

void MediaRemoteService::handleMediaRemoteChange()
{
    qCDebug(lcMediaRemote, "MediaRemote notification received \u2014 refreshing");
    refresh();
}

void MediaRemoteService::handleAppleMusicNotification()
{
    qCDebug(lcMediaRemote, "Apple Music notification received \u2014 refreshing via MediaRemote");
    refresh();
}

void MediaRemoteService::handleSpotifyNotification(const std::optional<QVariantHash> &userInfo)
{
    if (!userInfo) {
        qCCritical(lcMediaRemote, "Spotify notification had no userInfo");
        return;
    }
    const QString state = text(*userInfo, "Player State");
    NowPlayingInfo info;
    info.title = text(*userInfo, "Name");
    info.artist = text(*userInfo, "Artist");
    qCInfo(lcMediaRemote, "Spotify notification: state=%s title=\"%s\" artist=\"%s\"",
           qUtf8Printable(state), qUtf8Printable(info.title), qUtf8Printable(info.artist));
    if (state == u"Stopped") {
        qCInfo(lcMediaRemote, "Spotify stopped \u2014 clearing nowPlaying");
        m_lastSpotifyInfo = NowPlayingInfo::empty();
        setNowPlaying(NowPlayingInfo::empty());
        return;
    }
    if (info.title.isEmpty()) {
        qCCritical(lcMediaRemote, "Spotify notification with empty title \u2014 ignoring");
        return;
    }
    info.album = text(*userInfo, "Album");
    info.duration = number(*userInfo, "Duration").value_or(0) / 1000; // it counts milliseconds
    info.elapsedAtFetch = number(*userInfo, "Playback Position").value_or(0);
    info.fetchTimestamp = m_clock.now();
    info.isPlaying = state == u"Playing";
    if (m_nowPlaying.title == info.title) {
        info.artwork = m_nowPlaying.artwork;
    }
    m_lastSpotifyInfo = info;
    setNowPlaying(info);
    refresh();
    if (info.artwork.isNull()) {
        lookUpArtwork(info);
    }
}

NowPlayingInfo MediaRemoteService::parse(const QVariantHash &answer) const
{
    NowPlayingInfo info;
    info.title = text(answer, NowPlayingKey::title);
    info.artist = text(answer, NowPlayingKey::artist);
    info.album = text(answer, NowPlayingKey::album);
    info.duration = number(answer, NowPlayingKey::duration).value_or(0);
    info.elapsedAtFetch = number(answer, NowPlayingKey::elapsedTime).value_or(0);
    info.isPlaying = number(answer, NowPlayingKey::playbackRate).value_or(0) > 0;
    info.artwork = image(answer.value(QLatin1String(NowPlayingKey::artworkData)));
    info.fetchTimestamp = m_clock.now();
    return info;
}

void MediaRemoteService::apply(const QVariantHash &answer)
{
    NowPlayingInfo info = parse(answer);
    if (info.title.isEmpty()) {
        applyAnswerWithoutTitle();
        return;
    }
    const bool broughtArtwork = !info.artwork.isNull();
    if (!broughtArtwork && info.title == m_nowPlaying.title) {
        info.artwork = m_nowPlaying.artwork;
    }
    const bool hasArtwork = !info.artwork.isNull();
    qCDebug(lcMediaRemote, "MediaRemote \u2192 \"%s\" by \"%s\" playing=%d art=%s",
            qUtf8Printable(info.title), qUtf8Printable(info.artist), info.isPlaying,
            broughtArtwork ? "yes"
            : hasArtwork   ? "no (preserved=true)"
                           : "no (preserved=false)");
    setNowPlaying(info);
    m_lastSpotifyInfo = NowPlayingInfo::empty();
    // The player's own cover may be on its way still: another answer follows it.
    if (!hasArtwork && !answer.value(QLatin1String(NowPlayingKey::artworkPending)).toBool()) {
        lookUpArtwork(info);
    }
}

void MediaRemoteService::applyAnswerWithoutTitle()
{
    if (m_lastSpotifyInfo.title.isEmpty()) {
        qCDebug(lcMediaRemote,
                "MediaRemote empty, no Spotify fallback \u2014 nowPlaying unchanged");
        return;
    }
    qCDebug(lcMediaRemote, "MediaRemote empty \u2014 restoring lastSpotifyInfo: \"%s\"",
            qUtf8Printable(m_lastSpotifyInfo.title));
    NowPlayingInfo info = m_lastSpotifyInfo;
    if (info.artwork.isNull() && info.title == m_nowPlaying.title) {
        info.artwork = m_nowPlaying.artwork;
    }
    setNowPlaying(info);
}

void MediaRemoteService::setNowPlaying(const NowPlayingInfo &info)
{
    m_nowPlaying = info;
    Q_EMIT nowPlayingChanged();
}

void MediaRemoteService::lookUpArtwork(const NowPlayingInfo &info)
{
    const QImage known = m_artworkLookup.cached(info.title, info.artist);
    if (known.isNull()) {
        m_artworkLookup.start(
            info.title, info.artist,
            [this, title = info.title](const QImage &found) { artworkFound(title, found); });
    } else if (m_nowPlaying.title == info.title) {
        m_nowPlaying.artwork = known;
        Q_EMIT nowPlayingChanged();
    }
}

void MediaRemoteService::artworkFound(const QString &title, const QImage &image)
{
    // The image stays with the lookup for the track's return, if it has passed on meanwhile.
    if (m_nowPlaying.title != title) {
        return;
    }
    if (m_lastSpotifyInfo.title == title) {
        m_lastSpotifyInfo.artwork = image;
    }
    m_nowPlaying.artwork = image;
    qCInfo(lcMediaRemote, "iTunes artwork applied for \"%s\"", qUtf8Printable(title));
    Q_EMIT nowPlayingChanged();
}

void MediaRemoteService::sendCommand(PlaybackCommand command, const QVariantHash *options) const
{
    qCInfo(lcMediaRemote, "sendCommand: %s", name(command));
    if (m_remote.sendCommand) {
        m_remote.sendCommand(static_cast<quint32>(command), options);
    }
}

} // namespace velmora
