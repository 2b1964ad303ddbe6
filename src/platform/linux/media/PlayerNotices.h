#pragma once

#include "platform/linux/media/MprisPlayer.h"

#include <QStringList>

namespace velmora
{

/// The players that tell of their changes themselves.
enum class NoticeKind { None, Spotify, AppleMusic };

/// By the bus names of a player, without the part that all players share.
[[nodiscard]] NoticeKind noticeKind(const QStringList &names);

/// What such a player announces.
[[nodiscard]] PlayerNotice noticeOf(const MprisPlayer &player, MprisPlayer::Time now);

} // namespace velmora
