#include "platform/linux/media/MprisMediaRemote.h"

#include <utility>

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

constexpr auto reportInterval = 30ms;
/// Some players are without a track for a moment between two of them.
constexpr auto endDelay = 500ms;

const auto commonName = QStringLiteral("org.mpris.MediaPlayer2.");

QString methodOf(PlaybackCommand command)
{
    switch (command) {
    case PlaybackCommand::togglePlayPause:
        return QStringLiteral("PlayPause");
    case PlaybackCommand::nextTrack:
        return QStringLiteral("Next");
    case PlaybackCommand::previousTrack:
        return QStringLiteral("Previous");
    }
    return {};
}

} // namespace

MprisMediaRemote::MprisMediaRemote(BusConnection &bus, Clock &clock, HttpGetter &http)
    : m_bus(bus)
    , m_clock(clock)
    , m_artwork(clock, http)
    , m_reports(clock, reportInterval, [this] { report(); })
{
    m_bus.whenConnected(this, [this] { connectBus(); });
    connect(&m_artwork, &ArtworkLoader::settled, this, [this] {
        ++m_artworks;
        m_reports.request();
    });
}

void MprisMediaRemote::connectBus()
{
    m_watch.emplace(m_bus.connection(), QStringLiteral("org.mpris.MediaPlayer2*"));
    connect(&*m_watch, &OwnerWatch::appeared, this, &MprisMediaRemote::addName);
    connect(&*m_watch, &OwnerWatch::vanished, this, &MprisMediaRemote::removeName);
}

void MprisMediaRemote::addName(const QString &name, const QString &owner)
{
    const QString shortName = name.mid(commonName.size());
    if (shortName == u"playerctld") // repeats what another player says
        return;
    std::unique_ptr<Entry> &entry = m_players[owner];
    if (!entry) {
        entry = std::make_unique<Entry>(m_bus.connection(), m_clock, owner);
        connect(&entry->player, &BusPlayer::told, this,
                [this, told = entry.get()] { look(*told); });
    }
    entry->names.append(shortName);
}

void MprisMediaRemote::removeName(const QString &name, const QString &owner)
{
    const auto found = m_players.find(owner);
    if (found == m_players.end())
        return;
    Entry &entry = *found->second;
    const NoticeKind kind = noticeKind(entry.names);
    entry.names.removeOne(name.mid(commonName.size()));
    if (!entry.names.isEmpty())
        return;
    if (entry.noticedStatus != MprisPlayer::Status::Stopped)
        m_departures.append(kind);
    m_players.erase(found);
    updateCurrent();
    m_reports.request();
}

/// Takes notice of what has become of a player.
void MprisMediaRemote::look(Entry &entry)
{
    const MprisPlayer &state = entry.player.state();
    const bool isStatusNew = std::exchange(entry.status, state.status()) != state.status();
    const bool isTrackNew = std::exchange(entry.track, state.track()) != state.track();
    if (isStatusNew || isTrackNew)
        entry.active = ++m_activity;
    if (isStatusNew && state.isPlaying())
        entry.started = m_activity;
    updateCurrent();
    m_reports.request();
}

/// The player that is shown stays as long as it plays, and in silence until another begins, so that
/// the notch does not flicker between players.
void MprisMediaRemote::updateCurrent()
{
    const Entry *playing = nullptr; // the one that started last
    const Entry *silent = nullptr;  // the one that was active last
    for (const auto &[owner, entry] : m_players) {
        const MprisPlayer &state = entry->player.state();
        if (!state.hasItem())
            continue;
        if (state.isPlaying() && (!playing || entry->started > playing->started))
            playing = entry.get();
        if (!silent || entry->active > silent->active)
            silent = entry.get();
    }
    const Entry *const shown = current();
    const bool stays =
        shown && shown->player.state().hasItem() && (shown->player.state().isPlaying() || !playing);
    if (const Entry *const next = playing ? playing : silent; !stays)
        m_current = next ? next->owner : QString();

    std::tuple<QString, int, QString> wanted;
    if (const Entry *const entry = current()) {
        const MprisPlayer &state = entry->player.state();
        wanted = {m_current, state.trackCount(), state.track().artwork};
    }
    if (wanted == m_artworkFor)
        return;
    m_artworkFor = std::move(wanted);
    m_artwork.want(std::get<2>(m_artworkFor));
}

MprisMediaRemote::Entry *MprisMediaRemote::current() const
{
    const auto found = m_players.find(m_current);
    return found == m_players.end() ? nullptr : found->second.get();
}

void MprisMediaRemote::report()
{
    sendNotices();
    tellCurrent();
}

void MprisMediaRemote::sendNotices()
{
    QList<std::pair<NoticeKind, PlayerNotice>> notices;
    for (const NoticeKind kind : std::exchange(m_departures, {}))
        notices.append({kind, {}});
    for (auto &[owner, entry] : m_players) {
        const NoticeKind kind = noticeKind(entry->names);
        const MprisPlayer &state = entry->player.state();
        if (kind == NoticeKind::None ||
            (state.status() == entry->noticedStatus && state.track() == entry->noticedTrack))
            continue;
        // One that has been started and does nothing yet has nothing to say.
        const bool isSilent = state.status() == MprisPlayer::Status::Stopped &&
                              entry->noticedStatus == MprisPlayer::Status::Stopped;
        entry->noticedStatus = state.status();
        entry->noticedTrack = state.track();
        if (!isSilent)
            notices.append({kind, noticeOf(state, m_clock.uptime())});
    }
    for (const auto &[kind, notice] : std::as_const(notices)) {
        if (kind == NoticeKind::AppleMusic)
            Q_EMIT appleMusicChanged();
        // The end of one player is not to blank out what another one plays.
        else if (kind == NoticeKind::Spotify &&
                 (notice.state != PlaybackState::Stopped || !current()))
            Q_EMIT spotifyChanged(notice);
    }
}

void MprisMediaRemote::tellCurrent()
{
    Shown now;
    if (const Entry *const entry = current()) {
        const MprisPlayer &state = entry->player.state();
        now = {m_current, state.isPlaying(), state.track(), state.jumpCount(), m_artworks};
    }
    if (now == m_shown)
        return;
    // An answer without a track only says that nothing is known: the end of it all is a notice.
    if (!now.owner.isEmpty())
        m_end.reset();
    else
        m_end = m_clock.after(endDelay, [this] { Q_EMIT spotifyChanged({}); });
    m_shown = std::move(now);
    Q_EMIT changed();
}

std::optional<MediaTrack> MprisMediaRemote::track()
{
    Entry *const entry = current();
    if (!entry)
        return std::nullopt;
    entry->player.refreshPosition(); // for the next answer; this one does not wait for it
    MediaTrack track = entry->player.state().mediaTrack(m_clock.uptime());
    track.isArtworkPending = m_artwork.state() == ArtworkLoader::State::Loading;
    track.artwork = m_artwork.image();
    return track;
}

void MprisMediaRemote::send(PlaybackCommand command)
{
    if (const Entry *const entry = current())
        entry->player.send(methodOf(command));
}

} // namespace velmora
