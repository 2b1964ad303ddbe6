#include "style/BottomRoundedShape.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace velmora
{

namespace
{

/// How far the curve of a bottom corner has come in from the side at `depth` points above the
/// bottom. The quadratic curve from (0, R) by way of (0, 0) to (R, 0), with the corner as origin,
/// is x = R t², height = R (1 − t)²; solved for the height: x = (√R − √height)².
double cornerInset(double depth, double radius)
{
    if (depth >= radius) {
        return 0;
    }
    const double root = std::sqrt(radius) - std::sqrt(std::max(depth, 0.0));
    return root * root;
}

} // namespace

QPainterPath bottomRoundedPath(const QRectF &rect, double radius)
{
    QPainterPath path;
    path.moveTo(rect.topLeft());
    path.lineTo(rect.topRight());
    path.lineTo(rect.right(), rect.bottom() - radius);
    path.quadTo(rect.bottomRight(), QPointF(rect.right() - radius, rect.bottom()));
    path.lineTo(rect.left() + radius, rect.bottom());
    path.quadTo(rect.bottomLeft(), QPointF(rect.left(), rect.bottom() - radius));
    path.closeSubpath();
    return path;
}

QRegion bottomRoundedRegion(const QRectF &rect, double radius, PixelRule rule)
{
    if (rect.isEmpty()) {
        return {};
    }
    // The first pixel from a coordinate on, and the one before which the last lies.
    const bool isTouched = rule == PixelRule::Touched;
    const auto first = [isTouched](double x) {
        return static_cast<int>(isTouched ? std::floor(x) : std::ceil(x - 0.5));
    };
    const auto end = [isTouched](double x) {
        return static_cast<int>(std::ceil(isTouched ? x : x - 0.5));
    };
    const QRect outer(QPoint(first(rect.left()), first(rect.top())),
                      QPoint(end(rect.right()) - 1, end(rect.bottom()) - 1));
    // Where the two curves overlap, the outline crosses itself: show all of the rectangle.
    if (radius > std::min(rect.width() / 2, rect.height())) {
        return outer;
    }
    const int rows = std::min(static_cast<int>(std::ceil(std::max(radius, 0.0))), outer.height());
    QRegion region(outer.adjusted(0, 0, 0, -rows));
    for (int row = 0; row < rows; ++row) {
        const int y = outer.bottom() - row;
        // The upper edge of a row is where the shape is widest.
        const double inset = cornerInset(rect.bottom() - y - (isTouched ? 0 : 0.5), radius);
        const int left = first(rect.left() + inset);
        region += QRect(left, y, end(rect.right() - inset) - left, 1);
    }
    return region;
}

QRegion roundedRegion(const QRectF &rect, double radius)
{
    if (rect.isEmpty()) {
        return {};
    }
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    return QRegion(path.toFillPolygon().toPolygon());
}

void BottomRoundedShape::paint(QPainter *painter)
{
    painter->setRenderHint(QPainter::Antialiasing);
    painter->fillPath(bottomRoundedPath(boundingRect(), m_radius), Qt::black);
}

} // namespace velmora
