#include "platform/linux/dbus/BusConnection.h"

#include <QLoggingCategory>

#include <algorithm>
#include <atomic>
#include <gio/gio.h>
#include <utility>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcBus, "com.velmora.app.BusConnection", QtInfoMsg)

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds firstPause = 250ms;
constexpr std::chrono::milliseconds longestPause = 30s;

/// Connects, authenticates and says hello, which Qt's way of doing so cannot be called off from.
bool answers(const QByteArray &address, GCancellable *cancellable)
{
    constexpr auto flags =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    GError *error = nullptr;
    GDBusConnection *const probe = g_dbus_connection_new_for_address_sync(
        address.constData(), flags, nullptr, cancellable, &error);
    if (probe == nullptr) {
        qCDebug(lcBus) << "No bus at" << address << error->message;
        g_error_free(error);
        return false;
    }
    g_dbus_connection_close_sync(probe, cancellable, nullptr);
    g_object_unref(probe);
    return true;
}

std::optional<QDBusConnection> connectTo(const QByteArray &address)
{
    static std::atomic<int> count{0};
    const QString name = QStringLiteral("velmora-%1").arg(++count);
    QDBusConnection connection =
        QDBusConnection::connectToBus(QString::fromLocal8Bit(address), name);
    if (connection.isConnected()) {
        return connection;
    }
    QDBusConnection::disconnectFromBus(name);
    return std::nullopt;
}

QDBusConnection noConnection()
{
    return QDBusConnection(QString());
}

} // namespace

BusConnection::BusConnection(QByteArray address)
    : m_address(std::move(address))
    , m_connection(noConnection())
    , m_cancellable(g_cancellable_new(), g_object_unref)
{
    if (m_address.isEmpty()) {
        m_hasTried = true;
    } else {
        m_searcher = std::thread(&BusConnection::search, this);
    }
}

BusConnection::BusConnection(const QDBusConnection &connection)
    : m_connection(connection)
    , m_hasTried(true)
{
}

BusConnection::~BusConnection()
{
    if (!m_searcher.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_change.notify_all();
    g_cancellable_cancel(m_cancellable.get());
    m_searcher.join();
    for (const QDBusConnection &connection : {m_found.value_or(noConnection()), m_connection}) {
        QDBusConnection::disconnectFromBus(connection.name());
    }
}

QByteArray BusConnection::sessionAddress()
{
    QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
    if (!address.isEmpty() || folder.isEmpty()) {
        return address;
    }
    const std::unique_ptr<char, decltype(&g_free)> path(
        g_dbus_address_escape_value(folder.constData()), g_free);
    return QByteArrayLiteral("unix:path=") + path.get() + QByteArrayLiteral("/bus");
}

bool BusConnection::waitForAnswer(std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    const bool hasTried = m_change.wait_for(lock, limit, [this] { return m_hasTried; });
    lock.unlock();
    takeFound();
    return hasTried;
}

/// On the thread of its own.
void BusConnection::search()
{
    std::chrono::milliseconds pause = firstPause;
    std::unique_lock lock(m_mutex);
    while (!m_isEnding) {
        lock.unlock();
        const auto found =
            answers(m_address, m_cancellable.get()) ? connectTo(m_address) : std::nullopt;
        lock.lock();
        m_hasTried = true;
        m_found = found;
        m_change.notify_all();
        if (!found) {
            m_change.wait_for(lock, pause, [this] { return m_isEnding; });
            pause = std::min(2 * pause, longestPause);
            continue;
        }
        pause = firstPause;
        QMetaObject::invokeMethod(this, &BusConnection::takeFound, Qt::QueuedConnection);
        m_change.wait(lock, [this] { return m_isEnding || m_isLost; });
        m_isLost = false;
    }
}

void BusConnection::takeFound()
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_found) {
            return;
        }
        m_connection = *std::exchange(m_found, std::nullopt);
    }
    m_connection.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                         QStringLiteral("org.freedesktop.DBus.Local"),
                         QStringLiteral("Disconnected"), this, SLOT(handleLoss()));
    if (m_connection.isConnected()) {
        Q_EMIT connected();
    } else { // lost on its way here
        handleLoss();
    }
}

void BusConnection::handleLoss()
{
    if (isConnected() || m_connection.name().isEmpty()) {
        return; // of an earlier one
    }
    qCWarning(lcBus) << "The bus is gone";
    QDBusConnection::disconnectFromBus(std::exchange(m_connection, noConnection()).name());
    Q_EMIT disconnected();
    {
        const std::lock_guard lock(m_mutex);
        m_isLost = true;
    }
    m_change.notify_all();
}

} // namespace velmora
