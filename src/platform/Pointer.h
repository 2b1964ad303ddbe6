#pragma once

#include <QObject>
#include <QPointF>

#include <optional>

namespace velmora
{

/// The pointer of the desktop, as far as the window system tells of it.
class Pointer : public QObject
{
    Q_OBJECT

public:
    /// Where the pointer is now, global, in points. Nothing where the window system does not tell
    /// (Wayland, XWayland): then only what the overlay's own windows have seen is known.
    [[nodiscard]] virtual std::optional<QPointF> location() const = 0;

Q_SIGNALS:
    /// The pointer moved while another program holds it, so that no window of ours is told: with a
    /// button pressed, or just released there. At most some 30 times a second; plain moves are not
    /// reported here, since the window under the pointer hears of them at no cost to anybody else.
    void movedElsewhere(const QPointF &location);
};

} // namespace velmora
