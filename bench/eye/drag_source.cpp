/// drag_source begin DISPLAY REGION COUNT FILES
/// drag_source hold DISPLAY PID RATE SECONDS
/// drag_source drop DISPLAY REGION COUNT ADDRESS
///
/// Drags files from a window of its own. It begins COUNT drags, of so many files, and watches for
/// the first changed pixel in a part of the screen after it took the selection: "ms", a list of
/// pairs: the time, and the longest time between two looks meanwhile. Those over a second are
/// counted in "missing", and if the picture is not what it was three seconds after the release, in
/// "stuck". Or it moves the pointer with the button down, RATE times a second, while it owns the
/// selection from a drag before: "asked", how often somebody wanted the files meanwhile,
/// "per_second" and "cpu", the percentage of a core that the process PID took. Or it drags a file
/// COUNT times: a third is dropped on the notch, a third is released elsewhere, and a third leaves
/// the notch and comes back for the drop. "stuck" counts those after which the notch does not look
/// as it did at first. Prints JSON.
#include "eye/XScreen.h"
#include "eye/XdndSource.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <random>
#include <stdexcept>
#include <utility>

namespace
{

using namespace velmora::bench;
using namespace std::chrono_literals;

constexpr auto patience = 1s;
constexpr auto collapsePatience = 3s;

std::string listOf(int files)
{
    std::string list;
    for (int i = 0; i < files; ++i)
        list += "file:///home/somebody/Pictures/A%20journey%20to%20the%20sea/picture-" +
                std::to_string(1'000'000 + i) + ".jpg\r\n";
    return list;
}

class Drags
{
public:
    Drags(const std::string &display, std::string list)
        : m_screen(display)
        , m_source(display, std::move(list))
        , m_middle(static_cast<int16_t>(m_screen.width() / 2))
    {
        m_screen.movePointer(XdndSource::x, XdndSource::y);
        m_screen.synchronize();
        wait(1s);
    }

    void begin(const Region &region, int count);
    void hold(pid_t program, int rate, double seconds);
    void drop(const Region &region, int count);

private:
    void wait(SteadyClock::duration time) { m_source.serveUntil(SteadyClock::now() + time); }
    void pause(int fromMilliseconds, int toMilliseconds);
    void setButton(bool isDown);
    void moveTo(int16_t x, int16_t y);
    bool waitForPicture(const Region &region, const Pixels &wanted);
    bool enterNotch();
    void leaveNotch();
    bool releaseOverNotch();

    XScreen m_screen;
    XdndSource m_source;
    int16_t m_middle;
    xcb_window_t m_target = XCB_NONE;
    std::mt19937 m_random{20};
};

/// In no step with any timer of the program.
void Drags::pause(int fromMilliseconds, int toMilliseconds)
{
    wait(std::chrono::milliseconds(
        std::uniform_int_distribution(fromMilliseconds, toMilliseconds)(m_random)));
}

void Drags::setButton(bool isDown)
{
    m_screen.pressButton(isDown);
    m_screen.flush();
    if (!m_source.serveUntil(SteadyClock::now() + patience,
                             [&] { return m_source.isButtonDown() == isDown; }))
        throw std::runtime_error("the button does not reach the window");
}

/// In some steps, as a hand does.
void Drags::moveTo(int16_t x, int16_t y)
{
    constexpr int steps = 6;
    for (int i = steps; i-- > 0;) {
        m_screen.movePointer(static_cast<int16_t>(x - i * 8), static_cast<int16_t>(y + i * 40));
        m_screen.flush();
        wait(10ms);
    }
}

bool Drags::waitForPicture(const Region &region, const Pixels &wanted)
{
    const auto end = SteadyClock::now() + collapsePatience;
    while (m_screen.capture(region) != wanted) {
        if (SteadyClock::now() > end)
            return false;
        wait(10ms);
    }
    return true;
}

void Drags::begin(const Region &region, int count)
{
    const auto calm = m_screen.capture(region);
    std::vector<std::pair<double, double>> times;
    int missing = 0;
    int stuck = 0;
    for (int i = 0; i < count; ++i) {
        m_screen.movePointer(XdndSource::x, XdndSource::y);
        setButton(true);
        const auto start = SteadyClock::now();
        m_source.takeSelection();
        bool isSeen = false;
        double elapsed = 0;
        double blind = 0;
        while (!isSeen && elapsed < 1000) {
            wait(1ms);
            isSeen = m_screen.capture(region) != calm;
            const double now = millisecondsBetween(start, SteadyClock::now());
            blind = std::max(blind, now - std::exchange(elapsed, now));
        }
        if (isSeen)
            times.emplace_back(elapsed, blind);
        else
            ++missing;
        pause(300, 500);
        setButton(false);
        stuck += waitForPicture(region, calm) ? 0 : 1;
        pause(300, 600);
    }
    std::printf(R"({"missing": %d, "stuck": %d, "ms": [)", missing, stuck);
    for (size_t i = 0; i < times.size(); ++i)
        std::printf("%s[%.2f, %.2f]", i == 0 ? "" : ", ", times[i].first, times[i].second);
    std::printf("]}\n");
}

double cpuSeconds(pid_t process)
{
    clockid_t clock{};
    timespec time{};
    if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &time) != 0)
        throw std::runtime_error("the program is gone");
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

void Drags::hold(pid_t program, int rate, double seconds)
{
    setButton(true);
    m_source.takeSelection();
    wait(500ms);
    setButton(false);
    wait(collapsePatience);

    const int before = m_source.asked();
    setButton(true);
    const double cpu = cpuSeconds(program);
    const auto start = SteadyClock::now();
    const auto interval = std::chrono::nanoseconds(1'000'000'000L / rate);
    int moves = 0;
    for (; millisecondsBetween(start, SteadyClock::now()) < seconds * 1000; ++moves) {
        m_source.serveUntil(start + interval * moves);
        m_screen.movePointer(static_cast<int16_t>(XdndSource::x + moves % 1000),
                             static_cast<int16_t>(XdndSource::y + moves % 100));
        m_screen.flush();
    }
    m_screen.synchronize();
    const double elapsed = millisecondsBetween(start, SteadyClock::now()) / 1000;
    const double used = cpuSeconds(program) - cpu;
    setButton(false);
    wait(500ms);
    std::printf("{\"asked\": %d, \"per_second\": %.0f, \"cpu\": %.3f}\n", m_source.asked() - before,
                moves / elapsed, 100 * used / elapsed);
}

/// True if the notch would take the drop.
bool Drags::enterNotch()
{
    constexpr int16_t y = 20; // within the notch, however large it is
    moveTo(m_middle, y);
    m_target = m_source.targetAt(m_middle, y);
    if (m_target == XCB_NONE)
        return false;
    m_source.enter(m_target);
    m_source.moveOver(m_target, m_middle, y);
    return m_source.serveUntil(SteadyClock::now() + patience, [&] {
        return m_source.answer().isKnown;
    }) && m_source.answer().isAccepted;
}

void Drags::leaveNotch()
{
    if (m_target != XCB_NONE)
        m_source.leave(m_target);
    moveTo(m_middle, 400);
}

/// True if the drop was taken.
bool Drags::releaseOverNotch()
{
    setButton(false);
    m_source.drop(m_target);
    return m_source.serveUntil(SteadyClock::now() + 3 * patience,
                               [&] { return m_source.answer().isFinished; });
}

void Drags::drop(const Region &region, int count)
{
    enum Course { dropped, aborted, returned, courses };
    const auto calm = m_screen.capture(region);
    int refused = 0;
    int unfinished = 0;
    int drops = 0;
    int stuck = 0;
    for (int i = 0; i < count; ++i) {
        const int course = i % courses;
        m_screen.movePointer(XdndSource::x, XdndSource::y);
        setButton(true);
        m_source.takeSelection();
        bool isOver = course != aborted && enterNotch();
        if (course == returned) {
            leaveNotch();
            pause(0, 700); // some come back to the panel, some to the collapsed notch
            isOver = enterNotch();
        }
        if (isOver) {
            unfinished += releaseOverNotch() ? 0 : 1;
            ++drops;
        } else {
            leaveNotch();
            setButton(false);
            refused += course == aborted ? 0 : 1;
        }
        m_screen.movePointer(m_middle, 500);
        m_screen.flush();
        // Of each course, some are followed by the next drag while the panel still closes: whether
        // they ended well shows in how that one goes.
        if (i / courses % 3 == 2)
            pause(0, 500);
        else
            stuck += waitForPicture(region, calm) ? 0 : 1;
    }
    stuck += waitForPicture(region, calm) ? 0 : 1;
    std::printf("{\"drags\": %d, \"drops\": %d, \"refused\": %d, \"unfinished\": %d, "
                "\"asked\": %d, \"stuck\": %d}\n",
                count, drops, refused, unfinished, m_source.asked(), stuck);
}

void run(char *argv[])
{
    const std::string mode = argv[1];
    const int number = std::clamp(std::atoi(argv[4]), 1, 20'000);
    if (mode == "begin")
        Drags(argv[2], listOf(std::atoi(argv[5]))).begin(parseRegion(argv[3]), number);
    else if (mode == "hold")
        Drags(argv[2], listOf(1)).hold(std::atoi(argv[3]), number, std::atof(argv[5]));
    else if (mode == "drop")
        Drags(argv[2], std::string(argv[5]) + "\r\n").drop(parseRegion(argv[3]), number);
    else
        throw std::runtime_error("these arguments make no sense");
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 6) {
        std::fprintf(stderr, "usage: drag_source begin DISPLAY REGION COUNT FILES\n"
                             "       drag_source hold DISPLAY PID RATE SECONDS\n"
                             "       drag_source drop DISPLAY REGION COUNT ADDRESS\n");
        return 2;
    }
    try {
        run(argv);
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "drag_source: %s\n", error.what());
        return 1;
    }
}
