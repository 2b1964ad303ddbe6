#pragma once

#include <QList>
#include <QString>

namespace velmora
{

/// What the choice among players looks at.
struct PlayerStanding {
    QString owner; ///< the player's unique name on the bus
    bool isPlaying = false;
    bool hasItem = false;
    quint64 started = 0; ///< when it last began to play; any count that grows
    quint64 active = 0;  ///< when anything of it last changed
};

/// The player whose item is shown, empty if there is none. The one that is shown stays as long as
/// it plays, and in silence until another begins, so that the notch does not flicker between
/// players.
[[nodiscard]] QString chooseCurrentPlayer(const QString &current,
                                          const QList<PlayerStanding> &players);

} // namespace velmora
