#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QVariantList>

#include <chrono>
#include <functional>
#include <optional>

namespace velmora
{

using BusAnswerHandler = std::function<void(const QDBusMessage &answer)>;

/// Sends a method call and returns at once. `handler` gets the reply or the error, on the main
/// loop, unless `context` is destroyed before. The reply keeps its place among the signals of the
/// one who was called, which QDBusPendingCallWatcher does not promise.
void callBus(const QDBusConnection &bus, const QDBusMessage &call, QObject *context,
             BusAnswerHandler handler, std::chrono::milliseconds limit = std::chrono::seconds(5));

/// A call of a method of the bus itself.
[[nodiscard]] QDBusMessage busMethod(const QString &method, const QVariantList &arguments = {});

/// Asks the bus for a name, as `callBus` does. `handler` gets whether it is ours, rather than
/// somebody else's; nothing if the bus does not give names.
void requestBusName(const QDBusConnection &bus, const QString &name, QObject *context,
                    std::function<void(std::optional<bool> isOurs)> handler,
                    std::chrono::milliseconds limit = std::chrono::seconds(5));

[[nodiscard]] inline bool isReply(const QDBusMessage &answer)
{
    return answer.type() == QDBusMessage::ReplyMessage;
}

} // namespace velmora
