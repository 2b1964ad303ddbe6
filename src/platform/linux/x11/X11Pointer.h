#pragma once

#include "platform/Pointer.h"
#include "platform/linux/x11/X11Connection.h"

#include <QPoint>
#include <QTimer>

#include <memory>
#include <optional>

namespace velmora
{

/// Moves with a button pressed are seen by asking for the pointer some 30 times a second from the
/// press to the release. The raw press is told to everybody, in spite of the grab that the program
/// under the pointer has by then. Raw motion would tell of every move, at a price for each one. A
/// finger on a touch screen counts as a button.
class X11Pointer final : public Pointer
{
    Q_OBJECT

public:
    /// Without a connection only `location` works. Under XWayland it does not either: of a pointer
    /// that is over no X11 window the server goes on telling the last place that it knows.
    explicit X11Pointer(std::shared_ptr<X11Connection> connection);
    ~X11Pointer() override;
    Q_DISABLE_COPY_MOVE(X11Pointer)

    [[nodiscard]] std::optional<QPointF> location() const override;

Q_SIGNALS:
    /// All buttons are up again, wherever that was.
    void released();

private:
    void selectRawPresses();
    void handleEvent(const xcb_generic_event_t *event);
    void ask();
    void takeAnswer();

    std::shared_ptr<X11Connection> m_connection;
    bool m_isXWayland;
    std::uint8_t m_inputOpcode = 0;
    QTimer m_timer;
    std::optional<unsigned int> m_question; ///< sequence number of the query that is under way
    std::optional<QPoint> m_last;           ///< pixels of the server
};

} // namespace velmora
