#include "media/MediaRemoteService.h"

#include <QLoggingCategory>

#include <array>

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

Q_LOGGING_CATEGORY(lcMediaRemote, "com.velmora.app.MediaRemote", QtInfoMsg)

constexpr auto startupRetryDelay = 2s;
constexpr auto pollInterval = 1s;

const char *name(PlaybackCommand command)
{
    static constexpr std::array names{"togglePlayPause", "nextTrack", "previousTrack"};
    return names.at(static_cast<std::size_t>(command));
}

const char *name(PlaybackState state)
{
    static constexpr std::array names{"Stopped", "Paused", "Playing"};
    return names.at(static_cast<std::size_t>(state));
}

} // namespace

MediaRemoteService::MediaRemoteService(Clock &clock, MediaRemote &remote, HttpGetter &http,
                                       const KeyValueStore &store, QObject *parent)
    : QObject(parent)
    , m_clock(clock)
    , m_remote(remote)
    , m_nowPlaying(NowPlayingInfo::empty())
    , m_lastSpotifyInfo(NowPlayingInfo::empty())
    , m_artworkLookup(clock, http, store)
{
    qCInfo(lcMediaRemote, "MediaRemoteService init");
    connect(&remote, &MediaRemote::changed, this, [this] {
        qCDebug(lcMediaRemote, "MediaRemote notification received \u2014 refreshing");
        refresh();
    });
    connect(&remote, &MediaRemote::spotifyChanged, this,
            &MediaRemoteService::handleSpotifyNotification);
    connect(&remote, &MediaRemote::appleMusicChanged, this, [this] {
        qCDebug(lcMediaRemote,
                "Apple Music notification received \u2014 refreshing via MediaRemote");
        refresh();
    });
    refresh();
    m_startupRetry = clock.after(startupRetryDelay, [this] {
        qCDebug(lcMediaRemote, "startup retry refresh");
        refresh();
    });
    m_pollTimer = clock.every(pollInterval, [this] { refresh(); });
}

void MediaRemoteService::refresh()
{
    const auto track = m_remote.track();
    if (track && !track->title.isEmpty()) {
        apply(*track);
    } else {
        applyAnswerWithoutTitle();
    }
}

void MediaRemoteService::handleSpotifyNotification(const PlayerNotice &notice)
{
    NowPlayingInfo info = infoFrom(notice.track);
    qCInfo(lcMediaRemote, "Spotify notification: state=%s title=\"%s\" artist=\"%s\"",
           name(notice.state), qUtf8Printable(info.title), qUtf8Printable(info.artist));
    if (notice.state == PlaybackState::Stopped) {
        qCInfo(lcMediaRemote, "Spotify stopped \u2014 clearing nowPlaying");
        m_lastSpotifyInfo = NowPlayingInfo::empty();
        setNowPlaying(NowPlayingInfo::empty());
        return;
    }
    if (info.title.isEmpty()) {
        qCCritical(lcMediaRemote, "Spotify notification with empty title \u2014 ignoring");
        return;
    }
    info.isPlaying = notice.state == PlaybackState::Playing;
    keepArtwork(info);
    m_lastSpotifyInfo = info;
    setNowPlaying(info);
    refresh();
    lookUpArtwork(info);
}

NowPlayingInfo MediaRemoteService::infoFrom(const MediaTrack &track) const
{
    NowPlayingInfo info;
    info.title = track.title;
    info.artist = track.artist;
    info.album = track.album;
    info.duration = track.duration;
    info.elapsedAtFetch = track.elapsed;
    info.isPlaying = track.isPlaying;
    info.artwork = track.artwork;
    info.hasOwnArtwork = track.isArtworkPending || !track.artwork.isNull();
    info.fetchTimestamp = m_clock.now();
    return info;
}

/// What has no image keeps that of the same title.
void MediaRemoteService::keepArtwork(NowPlayingInfo &info) const
{
    if (info.artwork.isNull() && info.title == m_nowPlaying.title) {
        info.artwork = m_nowPlaying.artwork;
        info.hasOwnArtwork |= m_nowPlaying.hasOwnArtwork && !info.artwork.isNull();
    }
}

void MediaRemoteService::apply(const MediaTrack &track)
{
    NowPlayingInfo info = infoFrom(track);
    keepArtwork(info);
    qCDebug(lcMediaRemote, "MediaRemote \u2192 \"%s\" by \"%s\" playing=%d art=%s",
            qUtf8Printable(info.title), qUtf8Printable(info.artist), info.isPlaying,
            !track.artwork.isNull()  ? "yes"
            : !info.artwork.isNull() ? "no (preserved=true)"
                                     : "no (preserved=false)");
    setNowPlaying(info);
    m_lastSpotifyInfo = NowPlayingInfo::empty();
    lookUpArtwork(info);
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
    keepArtwork(info);
    setNowPlaying(info);
}

void MediaRemoteService::setNowPlaying(const NowPlayingInfo &info)
{
    m_nowPlaying = info;
    Q_EMIT nowPlayingChanged();
}

/// A cover that the player names itself is waited for.
void MediaRemoteService::lookUpArtwork(const NowPlayingInfo &info)
{
    if (info.hasOwnArtwork || !info.artwork.isNull()) {
        return;
    }
    const QImage known = m_artworkLookup.cached(info.title, info.artist);
    if (known.isNull()) {
        m_artworkLookup.start(
            info.title, info.artist,
            [this, title = info.title](const QImage &found) { artworkFound(title, found); });
    } else if (m_nowPlaying.title == info.title && !m_nowPlaying.hasOwnArtwork) {
        m_nowPlaying.artwork = known;
        Q_EMIT nowPlayingChanged();
    }
}

void MediaRemoteService::artworkFound(const QString &title, const QImage &image)
{
    // The image stays with the lookup, for a track that has passed on meanwhile, or whose own cover
    // came first and may fail.
    if (m_nowPlaying.title != title || m_nowPlaying.hasOwnArtwork) {
        return;
    }
    if (m_lastSpotifyInfo.title == title) {
        m_lastSpotifyInfo.artwork = image;
    }
    m_nowPlaying.artwork = image;
    qCInfo(lcMediaRemote, "iTunes artwork applied for \"%s\"", qUtf8Printable(title));
    Q_EMIT nowPlayingChanged();
}

void MediaRemoteService::sendCommand(PlaybackCommand command) const
{
    qCInfo(lcMediaRemote, "sendCommand: %s", name(command));
    m_remote.send(command);
}

} // namespace velmora
