#include "platform/linux/media/MprisMediaRemote.h"

#include "platform/linux/media/CurrentPlayer.h"

#include <QLoggingCategory>

#include <algorithm>
#include <utility>

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

Q_LOGGING_CATEGORY(lcMprisRemote, "com.velmora.app.MprisMediaRemote", QtInfoMsg)

constexpr auto reportInterval = 30ms;
constexpr auto positionLifetime = 5s;
constexpr auto firstRetryDelay = 250ms;
/// Some players are without a track for a moment between two of them.
constexpr auto endDelay = 500ms;
constexpr int maximumRetries = 5;

/// The methods behind the commands' numbers; empty if the number means nothing to MPRIS. Seeking
/// (45) would need a track and a position.
QString methodOf(quint32 command)
{
    switch (command) {
    case 0:
        return QStringLiteral("Play");
    case 1:
        return QStringLiteral("Pause");
    case 2:
        return QStringLiteral("PlayPause");
    case 4:
        return QStringLiteral("Next");
    case 5:
        return QStringLiteral("Previous");
    default:
        return {};
    }
}

} // namespace

MprisMediaRemote::MprisMediaRemote(BusConnection &bus, Clock &clock)
    : m_clock(clock)
    , m_session(bus)
    , m_artwork(clock)
    , m_reports(clock, reportInterval, [this] { report(); })
{
    connect(&m_artwork, &ArtworkLoader::settled, this, [this] {
        ++m_artworks;
        m_reports.request();
    });
}

std::optional<MediaRemote::Functions> MprisMediaRemote::load(QString & /*error*/)
{
    m_session.whenConnected(this, [this] { connectBus(); });
    Functions functions;
    functions.getNowPlayingInfo = [this](InfoHandler handler) {
        askStalePosition();
        QMetaObject::invokeMethod(
            this, [this, handler = std::move(handler)] { handler(info()); }, Qt::QueuedConnection);
    };
    functions.sendCommand = [this](quint32 command, const QVariantHash *) {
        return sendCommand(command);
    };
    functions.registerForNowPlayingNotifications = [this] { m_isRegistered = true; };
    return functions;
}

void MprisMediaRemote::connectBus()
{
    m_bus.emplace(m_session.connection());
    connect(&*m_bus, &MprisBus::nameAppeared, this, &MprisMediaRemote::addName);
    connect(&*m_bus, &MprisBus::nameVanished, this, &MprisMediaRemote::removeName);
    connect(&*m_bus, &MprisBus::questionFailed, this, &MprisMediaRemote::takeFailure);
    connect(&*m_bus, &MprisBus::propertiesAnswered, this,
            [this](const QString &owner, const QVariantMap &properties) {
                update(owner, [&](Entry &entry) {
                    entry.isKnown = true;
                    entry.failures = 0;
                    entry.properties.isUnderWay = false;
                    entry.player.takeAll(properties, m_clock.uptime());
                });
            });
    connect(&*m_bus, &MprisBus::positionAnswered, this,
            [this](const QString &owner, const QVariant &microseconds) {
                update(owner, [&](Entry &entry) {
                    entry.position.isUnderWay = false;
                    entry.player.takePosition(microseconds, m_clock.uptime());
                });
            });
    connect(&*m_bus, &MprisBus::propertiesChanged, this,
            [this](const QString &sender, const QVariantMap &properties, bool isPartial) {
                update(sender, [&](Entry &entry) {
                    entry.player.takeChanges(properties, m_clock.uptime());
                    // One that did not answer when it appeared may do so now.
                    const bool isUnknown = !entry.isKnown && !entry.properties.isUnderWay;
                    entry.properties.isWanted |= isPartial || isUnknown;
                });
            });
    connect(&*m_bus, &MprisBus::seeked, this,
            [this](const QString &sender, const QVariant &microseconds) {
                update(sender, [&](Entry &entry) {
                    entry.player.takePosition(microseconds, m_clock.uptime());
                });
            });
    static_cast<void>(m_bus->start());
}

void MprisMediaRemote::addName(const QString &owner, const QString &name)
{
    Entry &entry = m_players[owner];
    if (entry.names.isEmpty()) {
        qCDebug(lcMprisRemote) << "Player" << name << "appeared";
        entry.properties.isWanted = true;
        m_reports.request();
    }
    entry.names.append(name);
}

void MprisMediaRemote::removeName(const QString &owner, const QString &name)
{
    const auto found = m_players.find(owner);
    if (found == m_players.end())
        return;
    Entry &entry = found->second;
    const NoticeKind kind = noticeKind(entry.names);
    entry.names.removeOne(name);
    if (!entry.names.isEmpty())
        return;
    if (entry.noticedStatus != MprisPlayer::Status::Stopped)
        m_departures.append(kind);
    m_players.erase(found);
    updateCurrent();
    m_reports.request();
}

void MprisMediaRemote::takeFailure(MprisBus::Question question, const QString &owner,
                                   const QDBusError & /*error*/)
{
    update(owner, [&](Entry &entry) {
        if (question == MprisBus::Question::Position) {
            entry.position.isUnderWay = false;
            return;
        }
        entry.properties.isUnderWay = false;
        if (!entry.isKnown && !entry.properties.isWanted)
            retryLater(owner, entry);
    });
}

/// Some players own their name a moment before they export the object behind it, and some are too
/// busy to answer while they start.
void MprisMediaRemote::retryLater(const QString &owner, Entry &entry)
{
    if (entry.failures >= maximumRetries)
        return;
    entry.retry = m_clock.after(firstRetryDelay * (1 << entry.failures++), [this, owner] {
        update(owner, [](Entry &waiting) { waiting.properties.isWanted = true; });
    });
}

/// Lets `change` work on a player, if this is one, and looks at what has become of it.
template<typename Change>
void MprisMediaRemote::update(const QString &owner, Change change)
{
    const auto found = m_players.find(owner);
    if (found == m_players.end())
        return;
    Entry &entry = found->second;
    const auto statusBefore = entry.player.status();
    const MprisTrack trackBefore = entry.player.track();
    change(entry);
    const bool isStatusNew = entry.player.status() != statusBefore;
    if (isStatusNew || entry.player.track() != trackBefore)
        entry.active = ++m_activity;
    if (isStatusNew && entry.player.isPlaying())
        entry.started = m_activity;
    if (entry.player.takePositionDoubt())
        entry.position.isWanted = true;
    updateCurrent();
    m_reports.request();
}

void MprisMediaRemote::updateCurrent()
{
    QList<PlayerStanding> standings;
    for (const auto &[owner, entry] : m_players)
        standings.append(
            {owner, entry.player.isPlaying(), entry.player.hasItem(), entry.started, entry.active});
    m_current = chooseCurrentPlayer(m_current, standings);
    wantArtwork();
}

void MprisMediaRemote::wantArtwork()
{
    const Entry *const entry = current();
    auto wanted =
        entry ? std::tuple(m_current, entry->player.trackCount(), entry->player.track().artwork)
              : std::tuple(QString(), 0, QString());
    if (wanted == m_artworkFor)
        return;
    m_artworkFor = std::move(wanted);
    m_artwork.want(std::get<2>(m_artworkFor));
}

const MprisMediaRemote::Entry *MprisMediaRemote::current() const
{
    const auto found = m_players.find(m_current);
    return found == m_players.end() ? nullptr : &found->second;
}

/// All that goes out, to players and to listeners.
void MprisMediaRemote::report()
{
    askPlayers();
    sendNotices();
    tellCurrent();
}

void MprisMediaRemote::askPlayers()
{
    for (auto &[owner, entry] : m_players) {
        if (entry.properties.isWanted && !entry.properties.isUnderWay) {
            ask(MprisBus::Question::Properties, owner, entry.properties);
            entry.position.isWanted = false; // comes with the others
        }
        if (entry.position.isWanted && !entry.position.isUnderWay && entry.player.hasItem())
            ask(MprisBus::Question::Position, owner, entry.position);
    }
}

void MprisMediaRemote::ask(MprisBus::Question question, const QString &owner, Inquiry &inquiry)
{
    inquiry.isWanted = false;
    inquiry.isUnderWay = true;
    inquiry.asked = m_clock.uptime();
    m_bus->ask(question, owner);
}

void MprisMediaRemote::sendNotices()
{
    QList<std::pair<NoticeKind, QVariantHash>> notices;
    for (const NoticeKind kind : std::exchange(m_departures, {}))
        notices.append({kind, noticeOfEnd()});
    for (auto &[owner, entry] : m_players) {
        const NoticeKind kind = noticeKind(entry.names);
        const MprisPlayer &player = entry.player;
        if (kind == NoticeKind::None ||
            (player.status() == entry.noticedStatus && player.track() == entry.noticedTrack))
            continue;
        // One that has been started and does nothing yet has nothing to say.
        const bool isSilent = player.status() == MprisPlayer::Status::Stopped &&
                              entry.noticedStatus == MprisPlayer::Status::Stopped;
        entry.noticedStatus = player.status();
        entry.noticedTrack = player.track();
        if (!isSilent)
            notices.append({kind, noticeOf(player, m_clock.uptime())});
    }
    for (const auto &[kind, notice] : std::as_const(notices)) {
        // The end of one player is not to blank out what another one plays.
        if (kind == NoticeKind::Spotify && notice == noticeOfEnd() && current())
            continue;
        if (kind == NoticeKind::Spotify)
            Q_EMIT spotifyPlaybackStateChanged(notice);
        else
            Q_EMIT appleMusicPlayerInfo();
    }
}

void MprisMediaRemote::tellCurrent()
{
    Shown now;
    if (const Entry *const entry = current()) {
        const MprisPlayer &player = entry->player;
        now = {m_current,     player.isPlaying(), player.track(),
               player.rate(), player.jumpCount(), m_artworks};
    }
    const Shown before = std::exchange(m_shown, now);
    if (!m_isRegistered)
        return;
    // An empty answer only says that nothing is known: the end of it all is told by a notice.
    if (!now.owner.isEmpty())
        m_end.reset();
    else if (!before.owner.isEmpty())
        m_end =
            m_clock.after(endDelay, [this] { Q_EMIT spotifyPlaybackStateChanged(noticeOfEnd()); });
    if (now.owner != before.owner)
        Q_EMIT nowPlayingApplicationDidChange();
    if (now.isPlaying != before.isPlaying)
        Q_EMIT nowPlayingApplicationIsPlayingDidChange();
    const bool isSame = now.track == before.track && now.rate == before.rate &&
                        now.jumps == before.jumps && now.artworks == before.artworks;
    if (!isSame)
        Q_EMIT nowPlayingInfoDidChange();
}

/// For the next answer; this one does not wait for it.
void MprisMediaRemote::askStalePosition()
{
    const auto found = m_players.find(m_current);
    if (found == m_players.end())
        return;
    Entry &entry = found->second;
    const auto now = m_clock.uptime();
    Inquiry &inquiry = entry.position;
    const bool isStale = entry.player.positionAge(now) > positionLifetime &&
                         (!inquiry.asked || now - *inquiry.asked > positionLifetime);
    if (entry.player.isPlaying() && isStale && !inquiry.isUnderWay)
        ask(MprisBus::Question::Position, found->first, inquiry);
}

QVariantHash MprisMediaRemote::info() const
{
    const Entry *const entry = current();
    if (!entry)
        return {};
    const MprisPlayer &player = entry->player;
    const MprisTrack &track = player.track();
    QVariantHash info;
    info[QLatin1String(NowPlayingKey::title)] = track.title;
    info[QLatin1String(NowPlayingKey::artist)] = track.artist;
    info[QLatin1String(NowPlayingKey::album)] = track.album;
    info[QLatin1String(NowPlayingKey::duration)] = track.duration;
    info[QLatin1String(NowPlayingKey::elapsedTime)] = player.position(m_clock.uptime());
    info[QLatin1String(NowPlayingKey::playbackRate)] = player.isPlaying() ? player.rate() : 0.0;
    if (m_artwork.state() == ArtworkLoader::State::Loading)
        info[QLatin1String(NowPlayingKey::artworkPending)] = true;
    else if (m_artwork.state() == ArtworkLoader::State::Ready)
        info[QLatin1String(NowPlayingKey::artworkData)] = m_artwork.image();
    return info;
}

bool MprisMediaRemote::sendCommand(quint32 command)
{
    const QString method = methodOf(command);
    if (method.isEmpty() || m_current.isEmpty())
        return false;
    m_bus->command(m_current, method);
    return true;
}

} // namespace velmora
