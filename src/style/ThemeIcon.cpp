#include "style/ThemeIcon.h"

#include <QIcon>
#include <QPainter>

namespace velmora
{

void ThemeIcon::paint(QPainter *painter)
{
    const QIcon icon = m_name.startsWith(u'/') ? QIcon(m_name) : QIcon::fromTheme(m_name);
    icon.paint(painter, boundingRect().toRect());
}

} // namespace velmora
