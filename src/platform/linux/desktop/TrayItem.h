#pragma once

#include "platform/StatusItem.h"
#include "platform/linux/dbus/BusConnection.h"
#include "platform/linux/dbus/BusInquiry.h"
#include "platform/linux/dbus/OwnerWatch.h"
#include "platform/linux/desktop/DBusMenu.h"
#include "platform/linux/desktop/StatusNotifierItem.h"

#include <optional>

namespace velmora
{

/// The status menu as an item of the desktop's tray. Without a session bus, or without a tray, it
/// is simply not seen; a bus or a tray that comes later, or again, is told of it. Never blocks.
class TrayItem : public QObject, public StatusItem
{
    Q_OBJECT

public:
    /// One item a connection. The clock has to outlive it.
    TrayItem(BusConnection &bus, Clock &clock);
    TrayItem(const TrayItem &) = delete;
    TrayItem &operator=(const TrayItem &) = delete;
    ~TrayItem() override;

    void setMenu(const Menu &menu) override { m_menu.setMenu(menu); }

private:
    void start();
    void stop();
    void registerAt(const QString &tray);

    BusConnection &m_bus;
    Clock &m_clock;
    DBusMenu m_menu;
    StatusNotifierItem m_item;
    QString m_announcedName; ///< what a tray is told
    std::optional<BusInquiry> m_registration;
    std::optional<OwnerWatch> m_trays;
};

} // namespace velmora
