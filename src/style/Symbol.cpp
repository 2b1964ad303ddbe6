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
    : ShapeItem(parent)
{
    connect(this, &Symbol::nameChanged, this, [this] {
        m_path = symbolPath(m_name);
        Q_EMIT changed();
    });
    connect(this, &Symbol::changed, this,
            [this] { setImplicitSize(m_size * boxPerSize, m_size * boxPerSize); });
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
