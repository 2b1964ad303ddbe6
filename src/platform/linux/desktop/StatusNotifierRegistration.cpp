#include "platform/linux/desktop/StatusNotifierRegistration.h"

#include "platform/linux/dbus/BusCall.h"

#include <QCoreApplication>
#include <QDBusError>
#include <QLoggingCategory>

#include <chrono>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcTray, "com.velmora.app.TrayItem", QtInfoMsg)

constexpr std::chrono::milliseconds firstRetryDelay{250};
constexpr int maximumFailures =
    6; // the last retry comes some eight seconds after the first failure

QString watcherName()
{
    return QStringLiteral("org.kde.StatusNotifierWatcher");
}

} // namespace

StatusNotifierRegistration::StatusNotifierRegistration(const QDBusConnection &connection)
    : m_connection(connection)
    , m_serviceName(
          QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid()))
{
    if (!m_connection.isConnected())
        return;
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &StatusNotifierRegistration::registerWithWatcher);

    m_watcherOwner.setConnection(m_connection);
    m_watcherOwner.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    m_watcherOwner.addWatchedService(watcherName());
    connect(&m_watcherOwner, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &newOwner) {
                handleOwnerChange(newOwner);
            });
    requestName();
}

StatusNotifierRegistration::~StatusNotifierRegistration()
{
    if (!m_connection.isConnected())
        return;
    // Hosts drop an item when its name goes; the connection may live on without it.
    m_connection.send(busMethod(QStringLiteral("ReleaseName"), {m_serviceName}));
}

void StatusNotifierRegistration::requestName()
{
    constexpr uint doNotQueue = 4;
    constexpr uint primaryOwner = 1;
    constexpr uint alreadyOwner = 4;
    const auto request = busMethod(QStringLiteral("RequestName"), {m_serviceName, doNotQueue});
    callBus(m_connection, request, this, [this](const QDBusMessage &answer) {
        const uint result = answer.arguments().value(0).toUInt();
        const bool ours = answer.type() == QDBusMessage::ReplyMessage &&
                          (result == primaryOwner || result == alreadyOwner);
        // A process with our number in another sandbox may have taken the name. Hosts also take
        // items under the unique name of their connection.
        m_announcedName = ours ? m_serviceName : m_connection.baseService();
        registerWithWatcher();
    });
}

void StatusNotifierRegistration::registerWithWatcher()
{
    if (m_announcedName.isEmpty())
        return; // the answer about the name leads here again
    m_retry.stop();
    QDBusMessage call =
        QDBusMessage::createMethodCall(watcherName(), QStringLiteral("/StatusNotifierWatcher"),
                                       watcherName(), QStringLiteral("RegisterStatusNotifierItem"));
    call << m_announcedName;
    call.setAutoStartService(false); // whether this desktop has a tray is not for us to decide
    const quint64 round = ++m_round;
    callBus(m_connection, call, this, [this, round](const QDBusMessage &answer) {
        if (round == m_round)
            handleAnswer(answer);
    });
}

void StatusNotifierRegistration::handleAnswer(const QDBusMessage &answer)
{
    if (answer.type() != QDBusMessage::ErrorMessage) {
        m_failures = 0;
        return;
    }
    const QDBusError error(answer);
    if (error.type() == QDBusError::ServiceUnknown ||
        answer.errorName() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner")) {
        qCInfo(lcTray) << "No tray in this session yet";
        return; // its coming is watched
    }
    // Some watchers own their name a moment before they export the object behind it.
    if (++m_failures < maximumFailures) {
        m_retry.start(firstRetryDelay * (1 << (m_failures - 1)));
        return;
    }
    qCWarning(lcTray) << "The tray refused the item:" << answer.errorName()
                      << answer.errorMessage().left(200);
}

void StatusNotifierRegistration::handleOwnerChange(const QString &newOwner)
{
    ++m_round;
    m_retry.stop();
    m_failures = 0;
    if (!newOwner.isEmpty())
        registerWithWatcher();
}

} // namespace velmora
