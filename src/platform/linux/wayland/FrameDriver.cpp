#include "platform/linux/wayland/FrameDriver.h"

#include <QCoreApplication>
#include <QEvent>

namespace velmora
{

namespace
{

constexpr int patience = 20;        // milliseconds: a little more than a frame
constexpr qint64 leastInterval = 4; // milliseconds: several windows draw in one frame

} // namespace

FrameDriver::FrameDriver()
{
    install();
}

FrameDriver::~FrameDriver()
{
    uninstall();
}

void FrameDriver::start()
{
    QAnimationDriver::start();
    m_lastStep = 0;
    m_withoutFrames.start(patience, this);
    QCoreApplication::instance()->installEventFilter(this);
}

void FrameDriver::stop()
{
    QCoreApplication::instance()->removeEventFilter(this);
    m_withoutFrames.stop();
    QAnimationDriver::stop();
}

void FrameDriver::timerEvent(QTimerEvent *)
{
    step();
}

bool FrameDriver::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::UpdateRequest && watched->isWindowType() &&
        elapsed() - m_lastStep >= leastInterval)
        step();
    return false;
}

void FrameDriver::step()
{
    m_lastStep = elapsed();
    m_withoutFrames.start(patience, this);
    advance();
}

} // namespace velmora
