#include "platform/linux/calendar/FolderWatch.h"

#include <sys/inotify.h>
#include <utility>

namespace velmora
{

FolderWatch::FolderWatch(std::function<void(const Change &)> changed)
    : m_changed(std::move(changed))
    , m_inotify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    if (m_inotify.isOpen()) {
        m_notifier = std::make_unique<QSocketNotifier>(m_inotify.get(), QSocketNotifier::Read);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [this] { read(); });
    }
}

int FolderWatch::add(const std::string &path)
{
    constexpr std::uint32_t changes = IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM |
                                      IN_MOVED_TO | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF |
                                      IN_ONLYDIR | IN_EXCL_UNLINK;
    return inotify_add_watch(m_inotify.get(), path.c_str(), changes);
}

void FolderWatch::remove(int watch)
{
    inotify_rm_watch(m_inotify.get(), watch);
}

void FolderWatch::read()
{
    alignas(inotify_event) char buffer[16384];
    ssize_t length = 0;
    while ((length = ::read(m_inotify.get(), buffer, sizeof buffer)) > 0) {
        for (const char *at = buffer; at < buffer + length;) {
            const auto *const event = reinterpret_cast<const inotify_event *>(at);
            at += sizeof(inotify_event) + event->len;
            if ((event->mask & IN_IGNORED) == 0) {
                m_changed({event->wd, event->len > 0 ? event->name : ""});
            }
        }
    }
}

} // namespace velmora
