/// frame_trace DISPLAY REGION SECONDS
///
/// Counts the different pictures that a part of the screen shows, looking every two milliseconds.
/// Prints JSON:
///   per_second  pictures a second, over the time in which something moves
///   moving_s    that time: all gaps between two pictures that are shorter than a tenth of a second
///   median_ms   the median of these gaps
///   longest_ms  the longest of them
#include "eye/Ticker.h"
#include "eye/XScreen.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <numeric>
#include <optional>

namespace
{

using namespace velmora::bench;
using namespace std::chrono_literals;

constexpr double standstill = 100; // milliseconds

std::vector<double> gaps(const XScreen &screen, const Region &region, double seconds)
{
    std::vector<double> found;
    std::optional<SteadyClock::time_point> changed;
    auto last = screen.capture(region);
    const auto start = SteadyClock::now();
    for (auto next = start; millisecondsBetween(start, next) < seconds * 1000;
         next = std::max(next + 2ms, SteadyClock::now())) {
        sleepUntil(next);
        auto picture = screen.capture(region);
        if (picture == last)
            continue;
        last = std::move(picture);
        const auto now = SteadyClock::now();
        if (changed && millisecondsBetween(*changed, now) < standstill)
            found.push_back(millisecondsBetween(*changed, now));
        changed = now;
    }
    return found;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: frame_trace DISPLAY REGION SECONDS\n");
        return 2;
    }
    try {
        const XScreen screen(argv[1]);
        auto found = gaps(screen, parseRegion(argv[2]), std::atof(argv[3]));
        if (found.empty())
            throw std::runtime_error("nothing moves there");
        std::sort(found.begin(), found.end());
        const double total = std::accumulate(found.begin(), found.end(), 0.0) / 1000;
        std::printf("{\"per_second\": %.1f, \"moving_s\": %.2f, \"median_ms\": %.2f, "
                    "\"longest_ms\": %.2f}\n",
                    static_cast<double>(found.size()) / total, total, found[found.size() / 2],
                    found.back());
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "frame_trace: %s\n", error.what());
        return 1;
    }
}
