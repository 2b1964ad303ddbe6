#include "platform/linux/calendar/SourceThread.h"

#include <chrono>

namespace velmora
{

using namespace std::chrono_literals;

SourceThread::SourceThread(SourceFactory factory)
    : m_factory(std::move(factory))
{
    m_changeTimer.setSingleShot(true);
    m_changeTimer.setInterval(50ms);
    connect(&m_changeTimer, &QTimer::timeout, this, &SourceThread::changed);
}

SourceThread::~SourceThread()
{
    m_isEnding = true;
    if (m_thread.isRunning()) {
        m_factory.giveUp();
        QMetaObject::invokeMethod(m_inThread.get(), [this] {
            m_source.reset();
            m_thread.quit();
        });
        m_thread.wait();
    }
}

void SourceThread::post(std::function<void()> job)
{
    if (!m_thread.isRunning()) {
        m_inThread->moveToThread(&m_thread);
        m_thread.start();
    }
    QMetaObject::invokeMethod(m_inThread.get(), [this, job = std::move(job)] {
        if (!m_isEnding) {
            job();
        }
    });
}

CalendarSource &SourceThread::source()
{
    if (!m_source) {
        m_source = m_factory.make();
        m_source->changed = [this] {
            QMetaObject::invokeMethod(this, [this] {
                if (!m_changeTimer.isActive()) {
                    m_changeTimer.start();
                }
            });
        };
    }
    return *m_source;
}

} // namespace velmora
