#include "platform/linux/media/PlayerNotices.h"

#include <algorithm>
#include <array>

namespace velmora
{

namespace
{

struct Program {
    QLatin1String name;
    NoticeKind kind = NoticeKind::None;
};

/// The service's own player, and the free programs that play the same service on Linux.
constexpr std::array programs{
    Program{QLatin1String("spotify"), NoticeKind::Spotify},
    Program{QLatin1String("spotifyd"), NoticeKind::Spotify},
    Program{QLatin1String("spotify-qt"), NoticeKind::Spotify},
    Program{QLatin1String("spotify-player"), NoticeKind::Spotify},
    Program{QLatin1String("spotify_player"), NoticeKind::Spotify},
    Program{QLatin1String("ncspot"), NoticeKind::Spotify},
    Program{QLatin1String("cider"), NoticeKind::AppleMusic},
    Program{QLatin1String("sidra"), NoticeKind::AppleMusic},
    Program{QLatin1String("applemusic"), NoticeKind::AppleMusic},
};

} // namespace

NoticeKind noticeKind(const QStringList &names)
{
    for (const QString &name : names) {
        // A second instance has a suffix: "spotifyd.instance4711".
        const auto program = QStringView(name).left(name.indexOf(u'.'));
        const auto found = std::find_if(programs.begin(), programs.end(), [&](const auto &known) {
            return program.compare(known.name, Qt::CaseInsensitive) == 0;
        });
        if (found != programs.end())
            return found->kind;
    }
    return NoticeKind::None;
}

PlayerNotice noticeOf(const MprisPlayer &player, MprisPlayer::Time now)
{
    if (player.status() == PlaybackState::Stopped)
        return {};
    PlayerNotice notice{player.status(), player.mediaTrack(now)};
    notice.track.isArtworkPending = !player.track().artwork.isEmpty();
    return notice;
}

} // namespace velmora
