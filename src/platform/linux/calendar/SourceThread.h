#pragma once

#include "platform/linux/calendar/CalendarSource.h"

#include <QThread>
#include <QTimer>

#include <atomic>
#include <utility>

namespace velmora
{

/// A source in a thread of its own, which begins with the first question. Questions are answered
/// in their order.
class SourceThread : public QObject
{
    Q_OBJECT

public:
    explicit SourceThread(SourceFactory factory);
    SourceThread(const SourceThread &) = delete;
    SourceThread &operator=(const SourceThread &) = delete;
    /// Waits for the question that is being worked on, which is told to give up.
    ~SourceThread() override;

    /// Runs `question` with the source, and then hands its result to `answer` on the main loop,
    /// unless this object is gone by then.
    template<typename Question, typename Answer>
    void ask(Question question, Answer answer)
    {
        post([this, question = std::move(question), answer = std::move(answer)] {
            QMetaObject::invokeMethod(
                this,
                [answer, result = question(source())]() mutable { answer(std::move(result)); },
                Qt::QueuedConnection);
        });
    }

Q_SIGNALS:
    /// Gathers what comes in quick succession.
    void changed();

private:
    void post(std::function<void()> job);
    CalendarSource &source();

    SourceFactory m_factory;
    QTimer m_changeTimer;
    std::atomic<bool> m_isEnding = false;
    std::unique_ptr<CalendarSource> m_source; ///< of the thread
    std::unique_ptr<QObject> m_inThread = std::make_unique<QObject>();
    QThread m_thread;
};

} // namespace velmora
