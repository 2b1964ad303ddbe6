#include "platform/linux/desktop/SingleInstance.h"

#include "platform/linux/dbus/BusCall.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QLoggingCategory>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcInstance, "com.velmora.app.SingleInstance", QtInfoMsg)

const QString serviceName = QStringLiteral("com.velmora.app");
const QString objectPath = QStringLiteral("/com/velmora/app");

} // namespace

SingleInstance::SingleInstance(BusConnection &bus, std::chrono::milliseconds limit)
    : m_bus(bus)
    , m_limit(limit)
{
    m_bus.whenConnected(this, [this] { claim(); });
}

SingleInstance::~SingleInstance()
{
    withdraw();
}

void SingleInstance::claim()
{
    m_role = Role::Unknown;
    m_deadline.setRemainingTime(m_limit.count());
    // The object stands before the name does, for a call that follows the name at once.
    QDBusConnection(m_bus.connection())
        .registerObject(objectPath, this, QDBusConnection::ExportScriptableContents);
    requestName();
}

void SingleInstance::Activate(const QVariantMap & /*platformData*/)
{
    Q_EMIT activated();
}

void SingleInstance::Open(const QStringList & /*uris*/, const QVariantMap & /*platformData*/)
{
    // The program opens no files. The call belongs to the interface and is answered.
}

void SingleInstance::ActivateAction(const QString &name, const QVariantList & /*parameter*/,
                                    const QVariantMap & /*platformData*/)
{
    if (name == QLatin1String("preferences"))
        Q_EMIT activated();
    else if (calledFromDBus())
        sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("There is no such action"));
}

void SingleInstance::requestName()
{
    requestBusName(
        m_bus.connection(), serviceName, this,
        [this](std::optional<bool> isOurs) {
            if (isOurs == false)
                activateOwner();
            else
                decide(isOurs ? Role::First : Role::NoBus);
        },
        m_limit);
}

void SingleInstance::activateOwner()
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        serviceName, objectPath, QStringLiteral("org.freedesktop.Application"),
        QStringLiteral("Activate"));
    call << QVariantMap();
    call.setAutoStartService(false);
    callBus(
        m_bus.connection(), call, this,
        [this](const QDBusMessage &answer) {
            const auto error = QDBusError(answer).type();
            // NoReply before the deadline means that the owner left with our call in its hands.
            const bool ownerLeft =
                error == QDBusError::ServiceUnknown || error == QDBusError::NoReply;
            if (ownerLeft && !m_deadline.hasExpired()) {
                requestName(); // the name is free again
                return;
            }
            if (!isReply(answer))
                qCWarning(lcInstance)
                    << "The running instance does not answer:" << answer.errorName();
            decide(Role::Second);
        },
        m_limit);
}

void SingleInstance::decide(Role role)
{
    if (role != Role::First)
        withdraw();
    m_role = role;
    Q_EMIT decided();
}

void SingleInstance::withdraw()
{
    QDBusConnection connection = m_bus.connection();
    if (m_role == Role::First)
        connection.send(busMethod(QStringLiteral("ReleaseName"), {serviceName}));
    connection.unregisterObject(objectPath);
}

} // namespace velmora
