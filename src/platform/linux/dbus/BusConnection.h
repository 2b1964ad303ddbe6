#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QObject>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

using GCancellable =
    struct _GCancellable; // NOLINT(bugprone-reserved-identifier): the name that GIO gives it

namespace velmora
{

/// The connection to a message bus, whenever there is one: a bus that answers late, and each that
/// follows after a restart at the same address. Qt blocks on a bus that accepts and does not
/// answer, so it only gets to see one that does, on a thread of its own. To be used on the main
/// thread.
class BusConnection : public QObject
{
    Q_OBJECT

public:
    /// Looks for the bus at `address` from now on. Does not need the application object.
    explicit BusConnection(QByteArray address);
    /// A connection that somebody else has made, and that is all there will be.
    explicit BusConnection(const QDBusConnection &connection);
    BusConnection(const BusConnection &) = delete;
    BusConnection &operator=(const BusConnection &) = delete;
    ~BusConnection() override;

    /// Where this session's bus is; empty if nothing tells.
    [[nodiscard]] static QByteArray sessionAddress();

    /// Without the main loop: waits for the bus to answer or to refuse, or for there to be none.
    /// False if it has done nothing of that within `limit`.
    bool waitForAnswer(std::chrono::milliseconds limit);

    [[nodiscard]] bool isConnected() const { return m_connection.isConnected(); }
    /// Takes no calls while there is no bus. Another one after each `connected`.
    [[nodiscard]] const QDBusConnection &connection() const { return m_connection; }

    /// Runs `start` now if there is a bus, and each time that there is one again, as long as
    /// `context` lives.
    template<typename Function>
    void whenConnected(const QObject *context, Function start)
    {
        connect(this, &BusConnection::connected, context, start);
        if (isConnected()) {
            start();
        }
    }

Q_SIGNALS:
    void connected();
    void disconnected();

private Q_SLOTS:
    void handleLoss();

private:
    void search();
    void takeFound();

    QByteArray m_address;
    QDBusConnection m_connection;
    std::shared_ptr<GCancellable> m_cancellable;

    std::mutex m_mutex; ///< of the next five
    std::condition_variable m_change;
    std::optional<QDBusConnection> m_found; ///< on its way to the main thread
    bool m_hasTried = false;
    bool m_isLost = false;
    bool m_isEnding = false;
    std::thread m_searcher;
};

} // namespace velmora
