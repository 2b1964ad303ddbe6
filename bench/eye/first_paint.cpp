/// first_paint DISPLAY REGION TIMEOUT-MS COMMAND [ARGUMENTS…]
///
/// Starts a command and watches a part of the screen, once a millisecond. Prints JSON:
///   frame_ms  from exec until at least half of the region's pixels differ from what was there
///   before text_ms   from exec until, after that, the region shows two or more colours that were
///   not
///             there before (a background with something on it); null if that does not come
///             within a second
/// The command is stopped at the end, and waited for until the picture is what it was.
#include "eye/Ticker.h"
#include "eye/XScreen.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <set>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ; // NOLINT(readability-redundant-declaration)

namespace
{

using namespace velmora::bench;
using namespace std::chrono_literals;

size_t changedPixels(const Pixels &before, const Pixels &after)
{
    size_t changed = 0;
    for (size_t i = 0; i < before.size(); ++i)
        changed += before[i] != after[i] ? 1 : 0;
    return changed;
}

bool showsText(const Pixels &before, const Pixels &after)
{
    const std::set<uint32_t> old(before.begin(), before.end());
    std::set<uint32_t> fresh;
    for (const auto pixel : after) {
        if (!old.contains(pixel))
            fresh.insert(pixel);
    }
    return fresh.size() >= 2;
}

/// The command, in a process group of its own; the whole group goes with this object.
class Command
{
public:
    explicit Command(char **arguments)
    {
        posix_spawnattr_t attributes{};
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
        const int error =
            posix_spawnp(&m_pid, arguments[0], nullptr, &attributes, arguments, environ);
        posix_spawnattr_destroy(&attributes);
        if (error != 0)
            throw std::runtime_error(std::string("cannot start ") + arguments[0]);
    }
    Command(const Command &) = delete;
    Command &operator=(const Command &) = delete;
    ~Command()
    {
        kill(-m_pid, SIGTERM);
        for (int i = 0; i < 200 && isRunning(); ++i)
            usleep(10'000);
        kill(-m_pid, SIGKILL);
        if (isRunning())
            waitpid(m_pid, nullptr, 0);
    }

    [[nodiscard]] bool isRunning()
    {
        if (!m_isReaped)
            m_isReaped = waitpid(m_pid, nullptr, WNOHANG) == m_pid;
        return !m_isReaped;
    }

private:
    pid_t m_pid = 0;
    bool m_isReaped = false;
};

struct Times {
    std::optional<double> frame;
    std::optional<double> text;
};

/// What the command leaves behind would be the background of the next measurement.
void waitForPicture(const XScreen &screen, const Region &region, const Pixels &wanted)
{
    const auto deadline = SteadyClock::now() + 3s;
    while (screen.capture(region) != wanted) {
        if (SteadyClock::now() > deadline)
            throw std::runtime_error("the screen did not return to what it was");
        sleepUntil(SteadyClock::now() + 10ms);
    }
}

Times watch(const XScreen &screen, const Region &region, const Pixels &before, char **arguments,
            double timeout)
{
    Times times;
    const auto start = SteadyClock::now();
    Command command(arguments);
    for (auto next = start;; next = std::max(next + 1ms, SteadyClock::now())) {
        sleepUntil(next);
        const auto picture = screen.capture(region);
        const double elapsed = millisecondsBetween(start, SteadyClock::now());
        if (!times.frame && changedPixels(before, picture) >= picture.size() / 2)
            times.frame = elapsed;
        if (times.frame && showsText(before, picture))
            times.text = elapsed;
        if (times.text || (times.frame && elapsed > *times.frame + 1000) || elapsed > timeout)
            break;
        if (!command.isRunning())
            throw std::runtime_error("the command ended before it showed anything");
    }
    return times;
}

void print(const char *name, const std::optional<double> &value, const char *end)
{
    if (value)
        std::printf("\"%s\": %.2f%s", name, *value, end);
    else
        std::printf("\"%s\": null%s", name, end);
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 5) {
        std::fprintf(stderr,
                     "usage: first_paint DISPLAY REGION TIMEOUT-MS COMMAND [ARGUMENTS...]\n");
        return 2;
    }
    try {
        const XScreen screen(argv[1]);
        const auto region = parseRegion(argv[2]);
        const auto before = screen.capture(region);
        const auto times = watch(screen, region, before, argv + 4, std::atof(argv[3]));
        waitForPicture(screen, region, before);
        std::printf("{");
        print("frame_ms", times.frame, ", ");
        print("text_ms", times.text, "}\n");
        return times.frame ? 0 : 1;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "first_paint: %s\n", error.what());
        return 1;
    }
}
