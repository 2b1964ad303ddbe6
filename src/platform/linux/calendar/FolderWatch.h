#pragma once

#include "platform/linux/UniqueFd.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>
#include <string>

namespace velmora
{

/// Tells of changes in folders. Works in the thread that made it, which needs an event loop.
class FolderWatch
{
public:
    struct Change {
        int watch = -1;   ///< -1 where changes were lost
        std::string name; ///< of what has changed inside the folder; empty for the folder itself
    };

    explicit FolderWatch(std::function<void(const Change &)> changed);

    /// A number for the folder, the same for all its paths; -1 where it cannot be watched.
    [[nodiscard]] int add(const std::string &path);
    void remove(int watch);
    /// Tells of what has changed up to now, without waiting for the event loop.
    void read();

private:
    std::function<void(const Change &)> m_changed;
    UniqueFd m_inotify;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace velmora
