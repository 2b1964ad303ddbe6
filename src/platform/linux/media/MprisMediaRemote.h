#pragma once

#include "platform/Clock.h"
#include "platform/MediaRemote.h"
#include "platform/linux/dbus/BusConnection.h"
#include "platform/linux/media/ArtworkLoader.h"
#include "platform/linux/media/MprisBus.h"
#include "platform/linux/media/MprisPlayer.h"
#include "platform/linux/media/PlayerNotices.h"
#include "platform/linux/Throttle.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <map>
#include <optional>
#include <tuple>

namespace velmora
{

/// What is playing, by the MPRIS players of the session bus. Answers come from what the players
/// have told already, so that one that hangs holds up nobody. However much they talk, each signal
/// comes at most every 30 ms, and only if what it is about has changed.
class MprisMediaRemote final : public MediaRemote
{
    Q_OBJECT

public:
    /// Bus and clock have to outlive the object, and the object what `load` yields.
    MprisMediaRemote(BusConnection &bus, Clock &clock);

    [[nodiscard]] std::optional<Functions> load(QString &error) override;

private:
    struct Inquiry {
        bool isWanted = false;
        bool isUnderWay = false;
        std::optional<MprisPlayer::Time> asked;
    };

    struct Entry {
        MprisPlayer player;
        QStringList names;
        quint64 started = 0; ///< counts of m_activity, for the choice of the current player
        quint64 active = 0;
        Inquiry properties;
        Inquiry position;
        bool isKnown = false; ///< all properties have been answered once
        int failures = 0;
        TimerHandle retry;
        /// As of the last notice, of those players that send notices.
        MprisPlayer::Status noticedStatus = MprisPlayer::Status::Stopped;
        MprisTrack noticedTrack;
    };

    /// What listeners may have seen of the current player.
    struct Shown {
        QString owner;
        bool isPlaying = false;
        MprisTrack track;
        double rate = 1;
        int jumps = 0;
        int artworks = 0;
    };

    void connectBus();
    void addName(const QString &owner, const QString &name);
    void removeName(const QString &owner, const QString &name);
    void takeFailure(MprisBus::Question question, const QString &owner, const QDBusError &error);
    template<typename Change>
    void update(const QString &owner, Change change);
    void retryLater(const QString &owner, Entry &entry);

    void updateCurrent();
    void wantArtwork();
    [[nodiscard]] const Entry *current() const;

    void report();
    void askPlayers();
    void ask(MprisBus::Question question, const QString &owner, Inquiry &inquiry);
    void sendNotices();
    void tellCurrent();

    void askStalePosition();
    [[nodiscard]] QVariantHash info() const;
    [[nodiscard]] bool sendCommand(quint32 command);

    Clock &m_clock;
    BusConnection &m_session;
    std::optional<MprisBus> m_bus; ///< absent until there is a session bus
    ArtworkLoader m_artwork;
    std::map<QString, Entry> m_players; ///< by owner
    QString m_current;                  ///< owner; empty if nothing is playing
    quint64 m_activity = 0;
    std::tuple<QString, int, QString> m_artworkFor; ///< owner, count of its tracks, address
    int m_artworks = 0;                             ///< counts what the loader has delivered
    QList<NoticeKind> m_departures;                 ///< of players that have not said "stopped"
    bool m_isRegistered = false;
    Shown m_shown;
    TimerHandle m_end;  ///< until it is told that nothing is playing any more
    Throttle m_reports; ///< last: its timer's task uses the others
};

} // namespace velmora
