#include "platform/linux/dbus/BusCall.h"

#include <QDBusError>

#include <utility>

namespace velmora
{

namespace
{

/// Receives the one answer; slots that are found by name keep the order of messages.
class BusAnswer : public QObject
{
    Q_OBJECT

public:
    BusAnswer(QObject *context, BusAnswerHandler handler)
        : QObject(context)
        , m_handler(std::move(handler))
    {
    }

public Q_SLOTS:
    void take(const QDBusMessage &answer)
    {
        deleteLater();
        // The handler may destroy the context, and so this object.
        const auto handler = std::move(m_handler);
        handler(answer);
    }
    void fail(const QDBusError &error, const QDBusMessage & /*call*/)
    {
        take(QDBusMessage::createError(error));
    }

private:
    BusAnswerHandler m_handler;
};

} // namespace

void callBus(const QDBusConnection &bus, const QDBusMessage &call, QObject *context,
             BusAnswerHandler handler, std::chrono::milliseconds limit)
{
    auto *const answer = new BusAnswer(context, std::move(handler));
    const bool isSent =
        bus.callWithCallback(call, answer, SLOT(take(QDBusMessage)),
                             SLOT(fail(QDBusError, QDBusMessage)), static_cast<int>(limit.count()));
    if (isSent)
        return;
    const auto notSent = [answer] {
        answer->take(QDBusMessage::createError(QDBusError::Disconnected, QString()));
    };
    QMetaObject::invokeMethod(answer, notSent, Qt::QueuedConnection);
}

QDBusMessage busMethod(const QString &method, const QVariantList &arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), method);
    call.setArguments(arguments);
    return call;
}

void requestBusName(const QDBusConnection &bus, const QString &name, QObject *context,
                    std::function<void(std::optional<bool> isOurs)> handler,
                    std::chrono::milliseconds limit)
{
    constexpr uint doNotQueue = 4;
    enum Result { becameOwner = 1, exists = 3, alreadyOwner = 4 };
    const auto take = [handler = std::move(handler)](const QDBusMessage &answer) {
        const uint result = isReply(answer) ? answer.arguments().value(0).toUInt() : 0;
        if (result == exists)
            handler(false);
        else if (result == becameOwner || result == alreadyOwner)
            handler(true);
        else
            handler(std::nullopt);
    };
    callBus(bus, busMethod(QStringLiteral("RequestName"), {name, doNotQueue}), context, take,
            limit);
}

} // namespace velmora

#include "BusCall.moc"
