/// player_trace hold SECONDS LENGTH TITLE COVER
/// player_trace change DISPLAY REGION COUNT COVER
/// player_trace press DISPLAY X,Y COUNT COVER
///
/// A player on the session bus. It plays a track of LENGTH seconds and says nothing more; or it
/// changes its track COUNT times, at random moments, and watches, once a millisecond, for the first
/// changed pixel in a part of the screen; or it presses the mouse button there COUNT times and
/// waits for the call that this makes. Prints JSON: "ms", a list of the times; those that took
/// longer than a second are counted in "missing".
#include "eye/BusPlayer.h"
#include "eye/XScreen.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <random>
#include <stdexcept>
#include <vector>

namespace
{

using namespace velmora::bench;
using namespace std::chrono_literals;

constexpr auto patience = 1s;

struct Outcome {
    std::vector<double> milliseconds;
    int missing = 0;

    void add(std::optional<double> time)
    {
        if (time)
            milliseconds.push_back(*time);
        else
            ++missing;
    }

    void print() const
    {
        std::printf(R"({"missing": %d, "ms": [)", missing);
        for (size_t i = 0; i < milliseconds.size(); ++i)
            std::printf("%s%.2f", i == 0 ? "" : ", ", milliseconds[i]);
        std::printf("]}\n");
    }
};

/// Long enough for everything that moves to come to rest, and in no step with any timer.
SteadyClock::duration randomPause()
{
    static std::mt19937 random{std::random_device{}()};
    return std::chrono::microseconds(std::uniform_int_distribution(600'000, 1'100'000)(random));
}

Track track(int number, const std::string &cover)
{
    return {"Track number " + std::to_string(number), "Someone", 180, cover};
}

void hold(double seconds, Track held)
{
    BusPlayer player("bench", std::move(held));
    player.serve(SteadyClock::now() + std::chrono::duration_cast<SteadyClock::duration>(
                                          std::chrono::duration<double>(seconds)));
}

std::optional<double> timeToChange(BusPlayer &player, const XScreen &screen, const Region &region,
                                   Track next)
{
    const auto before = screen.capture(region);
    const auto start = SteadyClock::now();
    player.play(std::move(next));
    while (SteadyClock::now() < start + patience) {
        if (screen.capture(region) != before)
            return millisecondsBetween(start, SteadyClock::now());
        player.serve(SteadyClock::now() + 1ms);
    }
    return std::nullopt;
}

Outcome watchChanges(const XScreen &screen, const Region &region, int count,
                     const std::string &cover)
{
    BusPlayer player("bench", track(0, cover));
    player.serve(SteadyClock::now() + 2s);
    Outcome outcome;
    for (int i = 1; i <= count; ++i) {
        player.serve(SteadyClock::now() + randomPause());
        outcome.add(timeToChange(player, screen, region, track(i, cover)));
    }
    return outcome;
}

Outcome watchPresses(const XScreen &screen, int16_t x, int16_t y, int count,
                     const std::string &cover)
{
    BusPlayer player("bench", track(0, cover));
    // The way there leads over the notch, which opens the panel.
    screen.movePointer(static_cast<int16_t>(screen.width() / 2), 10);
    screen.synchronize();
    player.serve(SteadyClock::now() + 2s);
    screen.movePointer(x, y);
    screen.synchronize();
    Outcome outcome;
    for (int i = 0; i < count; ++i) {
        player.serve(SteadyClock::now() + randomPause());
        screen.pressButton(true);
        screen.synchronize();
        player.serve(SteadyClock::now() + 60ms); // as long as a finger rests
        const auto start = SteadyClock::now();
        screen.pressButton(false);
        screen.flush();
        const auto call = player.serve(start + patience, "PlayPause");
        outcome.add(call ? std::optional(millisecondsBetween(start, *call)) : std::nullopt);
    }
    screen.movePointer(static_cast<int16_t>(screen.width() / 2), 500);
    screen.synchronize();
    return outcome;
}

int run(char *argv[])
{
    const std::string mode = argv[1];
    if (mode == "hold") {
        hold(std::atof(argv[2]), {argv[4], "Someone", std::atof(argv[3]), argv[5]});
        return 0;
    }
    const XScreen screen(argv[2]);
    const int count = std::atoi(argv[4]);
    int x = 0;
    int y = 0;
    Outcome outcome;
    if (mode == "change")
        outcome = watchChanges(screen, parseRegion(argv[3]), count, argv[5]);
    else if (mode == "press" && std::sscanf(argv[3], "%d,%d", &x, &y) == 2)
        outcome =
            watchPresses(screen, static_cast<int16_t>(x), static_cast<int16_t>(y), count, argv[5]);
    else
        throw std::runtime_error("these arguments make no sense");
    outcome.print();
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 6) {
        std::fprintf(stderr, "usage: player_trace hold SECONDS LENGTH TITLE COVER\n"
                             "       player_trace change DISPLAY REGION COUNT COVER\n"
                             "       player_trace press DISPLAY X,Y COUNT COVER\n");
        return 2;
    }
    try {
        return run(argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "player_trace: %s\n", error.what());
        return 1;
    }
}
