#pragma once

#include <QAnimationDriver>
#include <QBasicTimer>

namespace velmora
{

/// Lets all animations of the process go one step with each frame that the compositor asks for,
/// right before that is drawn. By themselves they go by a timer, which knows nothing of the
/// compositor's frames: a step then waits for up to a frame, and some frames show none.
///
/// Where no frame is asked for, since a step shows nothing or the screen sleeps, they go on by a
/// timer of their own.
class FrameDriver final : public QAnimationDriver
{
    Q_OBJECT

public:
    /// Drives animations until its end. Needs the application object.
    FrameDriver();
    ~FrameDriver() override;
    Q_DISABLE_COPY_MOVE(FrameDriver)

protected:
    void start() override;
    void stop() override;
    void timerEvent(QTimerEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void step();

    QBasicTimer m_withoutFrames;
    qint64 m_lastStep = 0; ///< milliseconds since the start
};

} // namespace velmora
