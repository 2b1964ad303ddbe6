#pragma once

#include "platform/Clock.h"
#include "platform/MediaRemote.h"
#include "platform/linux/Throttle.h"
#include "platform/linux/dbus/BusConnection.h"
#include "platform/linux/dbus/OwnerWatch.h"
#include "platform/linux/media/ArtworkLoader.h"
#include "platform/linux/media/BusPlayer.h"
#include "platform/linux/media/PlayerNotices.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>
#include <optional>
#include <tuple>

namespace velmora
{

/// What is playing, by the MPRIS players of the session bus, told apart by the owner of their bus
/// names, since a program may have several. Answers come from what the players have told already,
/// so that one that hangs holds up nobody. However much they talk, changes are told at most every
/// 30 ms, and only if there are any.
class MprisMediaRemote final : public MediaRemote
{
    Q_OBJECT

public:
    /// Bus, clock and getter have to outlive the object.
    MprisMediaRemote(BusConnection &bus, Clock &clock, HttpGetter &http);

    [[nodiscard]] std::optional<MediaTrack> track() override;
    void send(PlaybackCommand command) override;

private:
    struct Entry {
        Entry(const QDBusConnection &bus, Clock &clock, const QString &owner)
            : owner(owner)
            , player(bus, clock, owner)
        {
        }

        QString owner; ///< the unique name of its connection
        BusPlayer player;
        QStringList names;   ///< without what all players' names begin with
        quint64 started = 0; ///< counts of m_activity, for the choice of the current player
        quint64 active = 0;
        /// As of the last look, and as of the last notice.
        MprisPlayer::Status status = MprisPlayer::Status::Stopped;
        MprisTrack track;
        MprisPlayer::Status noticedStatus = MprisPlayer::Status::Stopped;
        MprisTrack noticedTrack;
    };

    /// What listeners may have seen of the current player.
    struct Shown {
        QString owner;
        bool isPlaying = false;
        MprisTrack track;
        int jumps = 0;
        int artworks = 0;

        bool operator==(const Shown &) const = default;
    };

    void connectBus();
    void addName(const QString &name, const QString &owner);
    void removeName(const QString &name, const QString &owner);
    void look(Entry &entry);
    void updateCurrent();
    [[nodiscard]] Entry *current() const;

    void report();
    void sendNotices();
    void tellCurrent();

    BusConnection &m_bus;
    Clock &m_clock;
    ArtworkLoader m_artwork;
    std::map<QString, std::unique_ptr<Entry>> m_players; ///< by owner
    QString m_current;                                   ///< owner; empty if nothing is playing
    quint64 m_activity = 0;
    std::tuple<QString, int, QString> m_artworkFor; ///< owner, count of its tracks, address
    int m_artworks = 0;                             ///< counts what the loader has delivered
    QList<NoticeKind> m_departures;                 ///< of players that have not said "stopped"
    Shown m_shown;
    std::optional<OwnerWatch> m_watch;
    TimerHandle m_end;  ///< until it is told that nothing is playing any more
    Throttle m_reports; ///< last: its timer's task uses the others
};

} // namespace velmora
