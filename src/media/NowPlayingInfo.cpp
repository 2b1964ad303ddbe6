#include "media/NowPlayingInfo.h"

#include <algorithm>

namespace velmora
{

const NowPlayingInfo &NowPlayingInfo::empty()
{
    static const NowPlayingInfo none = [] {
        NowPlayingInfo info;
        info.fetchTimestamp = QDateTime::currentDateTime();
        return info;
    }();
    return none;
}

double NowPlayingInfo::position(const QDateTime &now) const
{
    if (!isPlaying || duration <= 0) {
        return elapsedAtFetch;
    }
    const double passed = static_cast<double>(fetchTimestamp.msecsTo(now)) / 1000;
    return std::min(duration, elapsedAtFetch + passed);
}

} // namespace velmora
