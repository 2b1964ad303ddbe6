/// pointer_storm DISPLAY REGION MOVES-A-SECOND SECONDS
///
/// Moves the pointer to and fro within a region, each move an event of its own at its own time, as
/// a fast mouse sends them. Prints JSON: sent, seconds, per_second. At most 60 seconds.
#include "eye/Ticker.h"
#include "eye/XScreen.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>

namespace
{

using namespace velmora::bench;
using namespace std::chrono_literals;

/// A zigzag over the region: every move is to another place than the one before.
void moveTo(const XScreen &screen, const Region &region, long step)
{
    const long span = std::max(region.width - 1, 1);
    const long phase = step % (2 * span);
    const long across = phase < span ? phase : 2 * span - phase;
    const long down = region.height > 1 ? step % region.height : 0;
    screen.movePointer(static_cast<int16_t>(region.x + across),
                       static_cast<int16_t>(region.y + down));
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 5) {
        std::fprintf(stderr, "usage: pointer_storm DISPLAY REGION MOVES-A-SECOND SECONDS\n");
        return 2;
    }
    try {
        const XScreen screen(argv[1]);
        const auto region = parseRegion(argv[2]);
        const auto rate = std::clamp(std::atol(argv[3]), 1L, 20'000L);
        const auto seconds = std::clamp(std::atof(argv[4]), 0.1, 60.0);
        const auto interval = std::chrono::nanoseconds(1'000'000'000L / rate);
        const auto total = static_cast<long>(static_cast<double>(rate) * seconds);

        const auto start = SteadyClock::now();
        // On a machine too busy to send them all, fewer are sent, rather than for longer.
        const auto end = start + std::chrono::duration_cast<SteadyClock::duration>(
                                     std::chrono::duration<double>(seconds * 1.1));
        long step = 0;
        for (; step < total && SteadyClock::now() < end; ++step) {
            sleepUntil(start + interval * step);
            moveTo(screen, region, step);
            screen.flush();
        }
        screen.synchronize();
        const double elapsed = millisecondsBetween(start, SteadyClock::now()) / 1000;
        std::printf("{\"sent\": %ld, \"seconds\": %.3f, \"per_second\": %.0f}\n", step, elapsed,
                    static_cast<double>(step) / elapsed);
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "pointer_storm: %s\n", error.what());
        return 1;
    }
}
