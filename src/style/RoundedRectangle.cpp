#include "style/RoundedRectangle.h"

#include <QPainter>

#include <algorithm>

namespace velmora
{

void RoundedRectangle::paint(QPainter *painter)
{
    const auto draw = [this, painter](double width, const QColor &color) {
        const double radius = std::min({m_radius, width / 2, height() / 2});
        painter->setBrush(color);
        painter->drawRoundedRect(QRectF(0, 0, width, height()), radius, radius);
    };
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    draw(width(), m_color);
    if (m_value > 0) {
        draw(width() * std::min(m_value, 1.0), m_fill);
    }
}

} // namespace velmora
