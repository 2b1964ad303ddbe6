#include "platform/linux/media/CurrentPlayer.h"

namespace velmora
{

QString chooseCurrentPlayer(const QString &current, const QList<PlayerStanding> &players)
{
    const PlayerStanding *shown = nullptr;
    const PlayerStanding *playing = nullptr; // the one that started last
    const PlayerStanding *silent = nullptr;  // the one that was active last
    for (const PlayerStanding &player : players) {
        if (!player.hasItem)
            continue;
        if (player.owner == current)
            shown = &player;
        if (player.isPlaying && (!playing || player.started > playing->started))
            playing = &player;
        if (!silent || player.active > silent->active)
            silent = &player;
    }
    if (shown && (shown->isPlaying || !playing))
        return shown->owner;
    if (playing)
        return playing->owner;
    return silent ? silent->owner : QString();
}

} // namespace velmora
