#include "platform/linux/desktop/TrayItem.h"

#include <QCoreApplication>

namespace velmora
{

namespace
{

const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");

QString itemName()
{
    return QStringLiteral("org.kde.StatusNotifierItem-%1-1")
        .arg(QCoreApplication::applicationPid());
}

} // namespace

TrayItem::TrayItem(BusConnection &bus, Clock &clock)
    : m_bus(bus)
    , m_clock(clock)
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
    QDBusConnection bus = m_bus.connection();
    bus.registerObject(m_item.menuPath(), &m_menu, QDBusConnection::ExportScriptableContents);
    bus.registerObject(itemPath, &m_item, QDBusConnection::ExportScriptableContents);
    // Last, since what is announced has to be there.
    m_registration.emplace(bus, m_clock, [](const QDBusMessage &) {});
    requestBusName(bus, itemName(), &*m_registration, [this](std::optional<bool> isOurs) {
        // A process with our number in another sandbox may have taken the name. Hosts also take
        // items under the unique name of their connection.
        m_announcedName = isOurs == true ? itemName() : m_bus.connection().baseService();
        m_trays.emplace(m_bus.connection(), watcherName);
        connect(&*m_trays, &OwnerWatch::appeared, this,
                [this](const QString &, const QString &owner) { registerAt(owner); });
    });
}

/// Some trays own their name a moment before they export the object behind it, and are asked again.
void TrayItem::registerAt(const QString &tray)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(tray, QStringLiteral("/StatusNotifierWatcher"), watcherName,
                                       QStringLiteral("RegisterStatusNotifierItem"));
    m_registration->setQuestion(call << m_announcedName);
    m_registration->request();
}

void TrayItem::stop()
{
    QDBusConnection bus = m_bus.connection();
    m_trays.reset();
    m_registration.reset();
    // Hosts drop an item when its name goes; the connection may live on without it.
    bus.send(busMethod(QStringLiteral("ReleaseName"), {itemName()}));
    bus.unregisterObject(itemPath);
    bus.unregisterObject(m_item.menuPath());
}

} // namespace velmora
