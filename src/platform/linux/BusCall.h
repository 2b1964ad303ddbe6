#pragma once

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QObject>

namespace velmora
{

/// A call of the bus itself.
inline QDBusMessage busCall(const QString &method)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                          QStringLiteral("/org/freedesktop/DBus"),
                                          QStringLiteral("org.freedesktop.DBus"), method);
}

/// Hands over the answer, or the error, when it has come and if `context` still lives.
template<typename Handler>
void onAnswer(const QDBusPendingCall &call, QObject *context, Handler handler)
{
    auto *pending = new QDBusPendingCallWatcher(call, context);
    QObject::connect(pending, &QDBusPendingCallWatcher::finished, context, [pending, handler] {
        pending->deleteLater();
        handler(pending->reply());
    });
}

} // namespace velmora
