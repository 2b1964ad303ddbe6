#include "platform/linux/desktop/UnixSignals.h"

#include <QLoggingCategory>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcSignals, "com.velmora.app.UnixSignals", QtInfoMsg)

// A handler runs between any two instructions of any thread: it may only write to a descriptor.
// (Blocking the signals and reading a signalfd would not do: threads that exist already, such as
// the one of Qt's D-Bus layer, would still take them, and child processes inherit the blocking.)
std::atomic<int> wakeFd{-1};
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void velmoraHandleSignal(int /*signal*/)
{
    const int savedErrno = errno;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(wakeFd.load(), &one, sizeof one);
    errno = savedErrno;
}

} // namespace

UnixSignals::UnixSignals()
    : m_eventFd(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
    Q_ASSERT(wakeFd.load() == -1);
    if (!m_eventFd.isOpen()) {
        qCWarning(lcSignals) << "No descriptor for signals; they end the program at once";
        return;
    }
    m_notifier.emplace(m_eventFd.get(), QSocketNotifier::Read);
    connect(&*m_notifier, &QSocketNotifier::activated, this, &UnixSignals::drain);
    wakeFd.store(m_eventFd.get());
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        install(signal);
}

UnixSignals::~UnixSignals()
{
    for (const auto &[signal, previous] : m_previous)
        sigaction(signal, &previous, nullptr);
    wakeFd.store(-1);
}

void UnixSignals::install(int signal)
{
    struct sigaction previous = {};
    if (sigaction(signal, nullptr, &previous) != 0)
        return;
    // nohup, or a shell's background job: whoever started us wants it ignored.
    if (previous.sa_handler == SIG_IGN && signal != SIGTERM)
        return;
    struct sigaction action = {};
    action.sa_handler = velmoraHandleSignal;
    action.sa_flags = SA_RESTART;
    sigfillset(&action.sa_mask);
    if (sigaction(signal, &action, nullptr) == 0)
        m_previous.emplace_back(signal, previous);
}

void UnixSignals::drain()
{
    std::uint64_t count = 0;
    if (read(m_eventFd.get(), &count, sizeof count) == sizeof count)
        Q_EMIT terminationRequested();
}

} // namespace velmora
