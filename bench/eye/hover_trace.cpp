/// hover_trace DISPLAY COUNT COLLAPSED-WIDTH EXPANDED-WIDTH
///
/// Moves the pointer into the notch at the top centre of the screen, COUNT times, and samples one
/// row of the screen each millisecond to follow the left edge of the shape. Prints one JSON object
/// a line for each expansion:
///   first_ms    from the pointer's arrival to the first picture in which the shape is wider
///   settled_ms  to the picture in which it has its full width
///   steps       how many different widths were seen on the way
///   longest_ms  the longest time between two steps, between 2 % and 98 % of the way
///   blind_ms    the longest time between two samples in that stretch: a step gap that is not
///               clearly longer than this says nothing about the program
/// An expansion that does not come, or does not end, within two seconds has "error".
#include "eye/Ticker.h"
#include "eye/XScreen.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>
#include <thread>

namespace
{

using namespace velmora::bench;
using namespace std::chrono_literals;

constexpr int16_t rowY = 2;
constexpr auto patience = 2s;

class Tracer
{
public:
    Tracer(const XScreen &screen, int collapsedWidth, int expandedWidth)
        : m_screen(screen)
        , m_middle(static_cast<int16_t>(screen.width() / 2))
        , m_collapsed(collapsedWidth / 2)
        , m_expanded(expandedWidth / 2)
    {
        leave();
        std::this_thread::sleep_for(1500ms);
    }

    void traceOne();

private:
    struct Sample {
        double time;
        int reach; ///< from the middle to the left edge, in pixels
    };

    [[nodiscard]] Pixels row() const
    {
        const auto left = static_cast<int16_t>(m_middle - m_expanded - margin);
        return m_screen.capture({left, rowY, static_cast<uint16_t>(m_expanded + margin), 1});
    }

    /// The row holds the left half only; its right end is the middle of the screen.
    [[nodiscard]] int reach() const
    {
        const auto pixels = row();
        const auto edge = std::find(pixels.begin(), pixels.end(), shapeColour);
        return static_cast<int>(pixels.end() - edge);
    }

    void leave() const
    {
        m_screen.movePointer(m_middle, 500);
        m_screen.flush();
    }

    [[nodiscard]] bool waitForReach(int wanted) const;
    void report(const std::vector<Sample> &samples) const;

    static constexpr int margin = 8;
    static constexpr uint32_t shapeColour = 0;

    const XScreen &m_screen;
    int16_t m_middle;
    int m_collapsed;
    int m_expanded;
};

bool Tracer::waitForReach(int wanted) const
{
    const auto deadline = SteadyClock::now() + patience;
    while (std::abs(reach() - wanted) > 1) {
        if (SteadyClock::now() > deadline)
            return false;
        std::this_thread::sleep_for(10ms);
    }
    return true;
}

void Tracer::traceOne()
{
    if (!waitForReach(m_collapsed)) {
        std::printf("{\"error\": \"not collapsed: reach %d\"}\n", reach());
        leave();
        return;
    }
    std::vector<Sample> samples;
    samples.reserve(2500);
    const auto start = SteadyClock::now();
    m_screen.movePointer(m_middle, 10);
    for (auto next = start; SteadyClock::now() < start + patience;
         next = std::max(next + 1ms, SteadyClock::now())) {
        sleepUntil(next);
        const int now = reach();
        samples.push_back({millisecondsBetween(start, SteadyClock::now()), now});
        if (now >= m_expanded - 1)
            break;
    }
    report(samples);
    leave();
    // The notch closes after a delay of its own; a rest after that keeps one round out of the next.
    static_cast<void>(waitForReach(m_collapsed));
    std::this_thread::sleep_for(100ms);
}

void Tracer::report(const std::vector<Sample> &samples) const
{
    const int travel = m_expanded - m_collapsed;
    const int begin = m_collapsed + travel * 2 / 100;
    const int end = m_collapsed + travel * 98 / 100;
    std::optional<double> first;
    double lastStep = 0;
    double longest = 0;
    double blind = 0;
    int steps = 0;
    for (size_t i = 1; i < samples.size(); ++i) {
        const bool underWay = samples[i - 1].reach >= begin && samples[i - 1].reach <= end;
        if (underWay)
            blind = std::max(blind, samples[i].time - samples[i - 1].time);
        if (samples[i].reach == samples[i - 1].reach)
            continue;
        ++steps;
        if (!first)
            first = samples[i].time;
        if (underWay)
            longest = std::max(longest, samples[i].time - lastStep);
        lastStep = samples[i].time;
    }
    if (!first || samples.back().reach < m_expanded - 1) {
        std::printf("{\"error\": \"not expanded: reach %d after %.0f ms\"}\n", samples.back().reach,
                    samples.back().time);
        return;
    }
    std::printf("{\"first_ms\": %.2f, \"settled_ms\": %.2f, \"steps\": %d, \"longest_ms\": %.2f, "
                "\"blind_ms\": %.2f}\n",
                *first, samples.back().time, steps, longest, blind);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 5) {
        std::fprintf(stderr, "usage: hover_trace DISPLAY COUNT COLLAPSED-WIDTH EXPANDED-WIDTH\n");
        return 2;
    }
    try {
        const XScreen screen(argv[1]);
        Tracer tracer(screen, std::atoi(argv[3]), std::atoi(argv[4]));
        for (int i = std::atoi(argv[2]); i > 0; --i)
            tracer.traceOne();
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "hover_trace: %s\n", error.what());
        return 1;
    }
}
