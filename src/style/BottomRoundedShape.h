#pragma once

#include "style/ShapeItem.h"

#include <QPainterPath>
#include <QRegion>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// The outline of the notch: square at the top, where it meets the edge of the screen, quadratic
/// curves (not arcs) at the bottom corners. The radius is not limited to half the rectangle.
[[nodiscard]] QPainterPath bottomRoundedPath(const QRectF &rect, double radius);

/// Which pixels belong to an outline: all that it touches, or those whose centre is inside.
enum class PixelRule { Touched, Centre };

/// The pixels of the outline: what a window that holds the shape has to show.
[[nodiscard]] QRegion bottomRoundedRegion(const QRectF &rect, double radius,
                                          PixelRule rule = PixelRule::Touched);

/// The pixels of a rectangle with all four corners rounded; empty for an empty rectangle.
[[nodiscard]] QRegion roundedRegion(const QRectF &rect, double radius);

/// The outline, filled with black.
class BottomRoundedShape : public velmora::ShapeItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(qreal radius MEMBER m_radius NOTIFY changed FINAL)

public:
    void paint(QPainter *painter) override;

private:
    qreal m_radius = 0;
};

} // namespace velmora
