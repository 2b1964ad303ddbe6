#pragma once

#include "platform/linux/files/LocalFile.h"

#include <QObject>
#include <QThreadPool>

#include <utility>

namespace velmora
{

/// Threads for work that waits for disks, which the main loop must not. They come with the first
/// job and go some time after the last.
class FileWorker : public QObject
{
    Q_OBJECT

public:
    explicit FileWorker(int mostThreads) { m_pool.setMaxThreadCount(mostThreads); }
    FileWorker(const FileWorker &) = delete;
    FileWorker &operator=(const FileWorker &) = delete;

    /// Waits for jobs that have begun, which are told to give up. Answers are not delivered then.
    ~FileWorker() override
    {
        g_cancellable_cancel(cancellable());
        m_pool.clear();
        m_pool.waitForDone();
    }

    /// Runs `job` in a thread, and then hands its result to `done` on the main loop.
    template<typename Job, typename Done>
    void run(Job job, Done done)
    {
        m_pool.start([this, job = std::move(job), done = std::move(done)]() mutable {
            auto result = job();
            QMetaObject::invokeMethod(
                this,
                [done = std::move(done), result = std::move(result)]() mutable {
                    done(std::move(result));
                },
                Qt::QueuedConnection);
        });
    }

    /// For jobs that take long.
    [[nodiscard]] GCancellable *cancellable() const { return m_cancellable.get(); }

private:
    GObjectPointer<GCancellable> m_cancellable{g_cancellable_new()};
    QThreadPool m_pool;
};

} // namespace velmora
