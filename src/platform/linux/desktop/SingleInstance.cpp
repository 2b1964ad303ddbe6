#include "platform/linux/desktop/SingleInstance.h"

#include "platform/linux/BusCall.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QLoggingCategory>

#include <algorithm>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcInstance, "com.velmora.app.SingleInstance", QtInfoMsg)

QString serviceName()
{
    return QStringLiteral("com.velmora.app");
}

QString objectPath()
{
    return QStringLiteral("/com/velmora/app");
}

int remaining(const QDeadlineTimer &deadline)
{
    return std::max(1, static_cast<int>(deadline.remainingTime()));
}

} // namespace

SingleInstance::SingleInstance(const QDBusConnection &connection)
    : m_connection(connection)
{
}

SingleInstance::~SingleInstance()
{
    if (m_ownsName)
        withdraw();
}

SingleInstance::Role SingleInstance::claim(std::chrono::milliseconds timeout)
{
    if (!m_connection.isConnected())
        return Role::NoBus;
    // The object stands before the name does, so that a call that follows the name at once finds
    // it. Its delivery waits for the main loop.
    m_connection.registerObject(objectPath(), this, QDBusConnection::ExportScriptableContents);
    const QDeadlineTimer deadline(timeout);
    do {
        const std::optional<bool> ours = requestName(deadline);
        if (!ours) {
            withdraw();
            return Role::NoBus;
        }
        m_ownsName = *ours;
        if (m_ownsName)
            return Role::First;
        // An owner that was about to leave takes no calls any more; then the name is free again.
    } while (!activateOwner(deadline) && !deadline.hasExpired());
    withdraw();
    return Role::Second;
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

/// Whether the name is ours now; nothing if the bus gives no usable answer.
std::optional<bool> SingleInstance::requestName(const QDeadlineTimer &deadline)
{
    constexpr uint doNotQueue = 4;
    constexpr uint primaryOwner = 1;
    constexpr uint exists = 3;
    constexpr uint alreadyOwner = 4;
    QDBusMessage request = busCall(QStringLiteral("RequestName"));
    request << serviceName() << doNotQueue;
    const QDBusMessage answer = m_connection.call(request, QDBus::Block, remaining(deadline));
    if (answer.type() != QDBusMessage::ReplyMessage) {
        qCWarning(lcInstance) << "The session bus gives no name:" << answer.errorName();
        return std::nullopt;
    }
    const uint result = answer.arguments().value(0).toUInt();
    if (result == primaryOwner || result == alreadyOwner)
        return true;
    return result == exists ? std::optional(false) : std::nullopt;
}

/// False if the owner has gone in the meantime.
bool SingleInstance::activateOwner(const QDeadlineTimer &deadline)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        serviceName(), objectPath(), QStringLiteral("org.freedesktop.Application"),
        QStringLiteral("Activate"));
    call << QVariantMap();
    call.setAutoStartService(false);
    const QDBusMessage answer = m_connection.call(call, QDBus::Block, remaining(deadline));
    if (answer.type() == QDBusMessage::ReplyMessage)
        return true;
    const QDBusError::ErrorType error = QDBusError(answer).type();
    // NoReply before the deadline means that the owner left with our call in its hands.
    const bool ownerLeft = error == QDBusError::ServiceUnknown ||
                           (error == QDBusError::NoReply && !deadline.hasExpired());
    if (!ownerLeft)
        qCWarning(lcInstance) << "The running instance does not answer:" << answer.errorName();
    return !ownerLeft;
}

void SingleInstance::withdraw()
{
    if (m_ownsName) {
        QDBusMessage release = busCall(QStringLiteral("ReleaseName"));
        release << serviceName();
        m_connection.send(release);
        m_ownsName = false;
    }
    m_connection.unregisterObject(objectPath());
}

} // namespace velmora
