#include "platform/linux/windowing/PlainOverlayShell.h"

#include <QPointer>
#include <QWindow>

namespace velmora
{
namespace
{

class PlainOverlaySurface final : public OverlaySurface
{
public:
    explicit PlainOverlaySurface(QWindow &window)
        : m_window(&window)
    {
    }
    ~PlainOverlaySurface() override
    {
        if (m_window)
            m_window->destroy();
    }
    Q_DISABLE_COPY_MOVE(PlainOverlaySurface)

    void orderFront() override
    {
        if (!m_window)
            return;
        m_window->show();
        m_window->raise();
    }

    void setShape(const OverlayShape &shape) override
    {
        const QRegion region = shape(1, true);
        // An empty mask means no mask to Qt; a spot outside of the window hides all of it.
        if (m_window)
            m_window->setMask(region.isEmpty() ? QRegion(-1, -1, 1, 1) : region);
    }

    void setKeyboardWanted(bool wanted) override
    {
        if (!m_window)
            return;
        m_window->setFlag(Qt::WindowDoesNotAcceptFocus, !wanted);
        if (wanted)
            m_window->requestActivate();
    }

private:
    QPointer<QWindow> m_window;
};

} // namespace

std::unique_ptr<OverlaySurface> PlainOverlayShell::adopt(QWindow &window, const Screen &screen,
                                                         const QRect &bounds)
{
    window.setFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                    Qt::WindowDoesNotAcceptFocus);
    window.setScreen(screen.handle());
    window.setGeometry(bounds);
    return std::make_unique<PlainOverlaySurface>(window);
}

} // namespace velmora
