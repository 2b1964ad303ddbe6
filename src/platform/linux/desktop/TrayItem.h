#pragma once

#include "platform/StatusItem.h"
#include "platform/linux/dbus/BusConnection.h"
#include "platform/linux/desktop/DBusMenu.h"
#include "platform/linux/desktop/StatusNotifierItem.h"
#include "platform/linux/desktop/StatusNotifierRegistration.h"

#include <QImage>
#include <QList>
#include <QString>

#include <optional>

namespace velmora
{

/// The status menu as an item of the desktop's tray. Without a session bus, or without a tray, it
/// is simply not seen; a bus or a tray that comes later finds it. Never blocks.
class TrayItem : public QObject, public StatusItem
{
public:
    /// `iconName` is for hosts that look icons up in a theme and may be empty; `icons` are the
    /// same symbol drawn by us, one image a size. One item a connection.
    TrayItem(BusConnection &bus, QString iconName, const QList<QImage> &icons,
             QString accessibleDescription = QStringLiteral("Notch"));
    TrayItem(const TrayItem &) = delete;
    TrayItem &operator=(const TrayItem &) = delete;
    ~TrayItem() override;

    void setMenu(const Menu &menu) override;

private:
    void start();
    void stop();

    BusConnection &m_bus;
    DBusMenu m_menu;
    StatusNotifierItem m_item;
    std::optional<StatusNotifierRegistration> m_registration; ///< while there is a bus
};

} // namespace velmora
