#include "platform/linux/media/PlayerNotices.h"

#include <QHash>

namespace velmora
{

NoticeKind noticeKind(const QStringList &names)
{
    using enum NoticeKind;
    // The services' own players, and the free programs that play the same service on Linux.
    static const QHash<QString, NoticeKind> programs{
        {u"spotify"_qs, Spotify},        {u"spotifyd"_qs, Spotify},
        {u"spotify-qt"_qs, Spotify},     {u"spotify-player"_qs, Spotify},
        {u"spotify_player"_qs, Spotify}, {u"ncspot"_qs, Spotify},
        {u"cider"_qs, AppleMusic},       {u"sidra"_qs, AppleMusic},
        {u"applemusic"_qs, AppleMusic},
    };
    for (const QString &name : names) {
        // A second instance has a suffix: "spotifyd.instance4711".
        const auto program = programs.constFind(name.section(u'.', 0, 0).toLower());
        if (program != programs.constEnd())
            return *program;
    }
    return None;
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
