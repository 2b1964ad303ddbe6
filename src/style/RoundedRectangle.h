#pragma once

#include "style/ShapeItem.h"

#include <QColor>
#include <QtQml/qqmlregistration.h>

#include <limits>

namespace velmora
{

/// A box, bar or dot, which may be filled in part from the left. (The software scene graph has no
/// smooth edges for such shapes where a point is not a whole number of pixels.)
class RoundedRectangle : public velmora::ShapeItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed FINAL)
    /// Points; by default, and at most, the ends are half circles.
    Q_PROPERTY(qreal radius MEMBER m_radius NOTIFY changed FINAL)
    Q_PROPERTY(QColor fill MEMBER m_fill NOTIFY changed FINAL)
    Q_PROPERTY(qreal value MEMBER m_value NOTIFY changed FINAL) ///< the filled part, cut to 0 to 1

public:
    void paint(QPainter *painter) override;

private:
    QColor m_color = Qt::white;
    qreal m_radius = std::numeric_limits<qreal>::max();
    QColor m_fill = Qt::white;
    qreal m_value = 0;
};

} // namespace velmora
