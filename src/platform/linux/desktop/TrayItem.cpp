#include "platform/linux/desktop/TrayItem.h"

#include <utility>

namespace velmora
{

namespace
{

QString itemPath()
{
    return QStringLiteral("/StatusNotifierItem");
}

QString menuPath()
{
    return QStringLiteral("/MenuBar");
}

} // namespace

TrayItem::TrayItem(const QDBusConnection &connection, QString iconName, const QList<QImage> &icons,
                   QString accessibleDescription)
    : m_connection(connection)
    , m_item(menuPath(), std::move(iconName), icons, std::move(accessibleDescription))
{
    m_connection.registerObject(menuPath(), &m_menu, QDBusConnection::ExportScriptableContents);
    m_connection.registerObject(itemPath(), &m_item, QDBusConnection::ExportScriptableContents);
    m_registration.emplace(m_connection);
}

TrayItem::~TrayItem()
{
    m_registration.reset();
    m_connection.unregisterObject(itemPath());
    m_connection.unregisterObject(menuPath());
}

void TrayItem::setMenu(const Menu &menu)
{
    m_menu.setMenu(menu);
}

} // namespace velmora
