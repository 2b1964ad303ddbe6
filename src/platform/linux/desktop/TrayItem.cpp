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

TrayItem::TrayItem(BusConnection &bus, QString iconName, const QList<QImage> &icons,
                   QString accessibleDescription)
    : m_bus(bus)
    , m_item(menuPath(), std::move(iconName), icons, std::move(accessibleDescription))
{
    connect(&m_bus, &BusConnection::disconnected, this, &TrayItem::stop);
    m_bus.whenConnected(this, [this] { start(); });
}

TrayItem::~TrayItem()
{
    stop();
}

void TrayItem::start()
{
    QDBusConnection connection = m_bus.connection();
    connection.registerObject(menuPath(), &m_menu, QDBusConnection::ExportScriptableContents);
    connection.registerObject(itemPath(), &m_item, QDBusConnection::ExportScriptableContents);
    m_registration.emplace(connection); // last: what it announces has to be there
}

void TrayItem::stop()
{
    QDBusConnection connection = m_bus.connection();
    m_registration.reset();
    connection.unregisterObject(itemPath());
    connection.unregisterObject(menuPath());
}

void TrayItem::setMenu(const Menu &menu)
{
    m_menu.setMenu(menu);
}

} // namespace velmora
