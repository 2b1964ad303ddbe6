#include "style/Symbol.h"

#include "style/SymbolPath.h"

#include <QPainter>

namespace velmora
{

namespace
{
constexpr double boxSize = 24;     // of the outlines
constexpr double boxPerSize = 1.2; // side of the symbol's square for a text size of 1
} // namespace

Symbol::Symbol(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
}

void Symbol::setName(const QString &name)
{
    if (name != m_name) {
        m_name = name;
        m_path = symbolPath(name);
        update();
        Q_EMIT nameChanged();
    }
}

void Symbol::setSize(qreal points)
{
    if (points != m_size) {
        m_size = points;
        setImplicitSize(points * boxPerSize, points * boxPerSize);
        update();
        Q_EMIT sizeChanged();
    }
}

void Symbol::setColor(const QColor &color)
{
    if (color != m_color) {
        m_color = color;
        update();
        Q_EMIT colorChanged();
    }
}

void Symbol::paint(QPainter *painter)
{
    const double side = m_size * boxPerSize;
    painter->setRenderHint(QPainter::Antialiasing);
    painter->translate((width() - side) / 2, (height() - side) / 2);
    painter->scale(side / boxSize, side / boxSize);
    painter->fillPath(m_path, m_color);
}

} // namespace velmora
