#include "style/ThemeIcon.h"

#include <QIcon>
#include <QPainter>

namespace velmora
{

ThemeIcon::ThemeIcon(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
}

void ThemeIcon::setName(const QString &name)
{
    if (name != m_name) {
        m_name = name;
        update();
        Q_EMIT nameChanged();
    }
}

void ThemeIcon::paint(QPainter *painter)
{
    const QIcon icon = m_name.startsWith(u'/') ? QIcon(m_name) : QIcon::fromTheme(m_name);
    icon.paint(painter, boundingRect().toRect());
}

} // namespace velmora
