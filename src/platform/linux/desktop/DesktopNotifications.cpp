#include "platform/linux/desktop/DesktopNotifications.h"

#include "platform/linux/dbus/BusCall.h"

#include <QLoggingCategory>

#include <algorithm>
#include <utility>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcNotifications, "com.velmora.app.DesktopNotifications", QtInfoMsg)

constexpr std::size_t maximumEntries = 64; // besides those with something to say
constexpr int maximumLength = 2000;

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");

QDBusMessage daemonCall(const QString &method)
{
    return QDBusMessage::createMethodCall(service, path, service, method);
}

bool looksLikeMarkup(const QString &text)
{
    return text.contains(u'<') || text.contains(u'&');
}

/// Names of devices and titles of events come from strangers, so there is some limit to them. The
/// bus carries texts that end with the first null.
QString bounded(const QString &text)
{
    return text.left(maximumLength).remove(QChar(u'\0'));
}

QString escaped(QString text)
{
    return text.replace(u'&', QLatin1String("&amp;"))
        .replace(u'<', QLatin1String("&lt;"))
        .replace(u'>', QLatin1String("&gt;"));
}

QVariantMap hintsOf(const UserNotification &notification)
{
    QVariantMap hints{{QStringLiteral("desktop-entry"), QStringLiteral("com.velmora.app")}};
    if (notification.hasSound) {
        hints.insert(QStringLiteral("sound-name"), QStringLiteral("message-new-instant"));
    } else {
        hints.insert(QStringLiteral("suppress-sound"), true);
    }
    return hints;
}

} // namespace

DesktopNotifications::DesktopNotifications(BusConnection &bus, std::chrono::milliseconds limit)
    : m_bus(bus)
    , m_limit(limit)
{
    m_ownerWatch.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    m_ownerWatch.addWatchedService(service);
    connect(&m_ownerWatch, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &newOwner) {
                handleOwnerChange(newOwner);
            });
    m_bus.whenConnected(this, [this] { start(); });
}

void DesktopNotifications::start()
{
    QDBusConnection connection = m_bus.connection();
    m_ownerWatch.setConnection(connection);
    // From whomever: to subscribe by the daemon's name would wait for the bus to say who owns it.
    connection.connect(QString(), path, service, QStringLiteral("NotificationClosed"), this,
                       SLOT(handleClosed(QDBusMessage)));
    handleOwnerChange(QString()); // an earlier bus had another daemon
}

void DesktopNotifications::add(const UserNotification &notification)
{
    entryFor(notification.identifier).next = notification;
    sendWhatIsReady();
}

DesktopNotifications::Entry &DesktopNotifications::entryFor(const QString &identifier)
{
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(),
                     [&identifier](const auto &entry) { return entry->identifier == identifier; });
    if (found != m_entries.end()) {
        m_entries.splice(m_entries.end(), m_entries, found);
        return *m_entries.back();
    }
    return *m_entries.emplace_back(std::make_shared<Entry>(Entry{.identifier = identifier}));
}

/// Text that could be taken for markup waits for the daemon's word about that, and all text waits
/// for the answer to an earlier one of the same identifier, since that tells what to replace.
void DesktopNotifications::sendWhatIsReady()
{
    for (const auto &entry : m_entries) {
        if (!entry->next || entry->isCalling) {
            continue;
        }
        const bool isUndecided = m_markup == Markup::Unknown || m_markup == Markup::Asking;
        if (isUndecided && looksLikeMarkup(entry->next->body)) {
            askForMarkup();
        } else {
            send(entry);
        }
    }
    auto count = m_entries.size();
    m_entries.remove_if([&count](const auto &entry) {
        const bool isUseless = entry->serverId == 0 || count > maximumEntries;
        const bool isForgotten = isUseless && !entry->isCalling && !entry->next;
        count -= isForgotten ? 1 : 0;
        return isForgotten;
    });
}

void DesktopNotifications::send(const std::shared_ptr<Entry> &entry)
{
    const UserNotification notification = *std::exchange(entry->next, std::nullopt);
    const QString body = bounded(notification.body);
    const QStringList noActions;
    constexpr int lifetimeAsUsual = -1;
    QDBusMessage call = daemonCall(QStringLiteral("Notify"));
    call << QStringLiteral("Velmora") << entry->serverId << QStringLiteral("com.velmora.app")
         << bounded(notification.title) << (m_markup == Markup::Plain ? body : escaped(body))
         << noActions << hintsOf(notification) << lifetimeAsUsual;
    entry->isCalling = true;
    const auto take = [this, entry](const QDBusMessage &answer) { handleAnswer(*entry, answer); };
    callBus(m_bus.connection(), call, this, take, m_limit);
}

void DesktopNotifications::handleAnswer(Entry &entry, const QDBusMessage &answer)
{
    const QVariant id = answer.arguments().value(0);
    const bool isId = isReply(answer) && id.typeId() == QMetaType::UInt;
    if (!isId) {
        qCDebug(lcNotifications) << "Not shown:" << answer;
    } else if (m_owner.isEmpty()) {
        m_owner = answer.service();
    }
    entry.isCalling = false;
    entry.serverId = isId && answer.service() == m_owner ? id.toUInt() : 0;
    sendWhatIsReady();
}

void DesktopNotifications::askForMarkup()
{
    if (m_markup == Markup::Asking) {
        return;
    }
    m_markup = Markup::Asking;
    callBus(
        m_bus.connection(), daemonCall(QStringLiteral("GetCapabilities")), this,
        [this, round = m_round](const QDBusMessage &answer) {
            if (round == m_round) {
                handleCapabilities(answer);
            }
        },
        m_limit);
}

void DesktopNotifications::handleCapabilities(const QDBusMessage &answer)
{
    const QVariant capabilities = answer.arguments().value(0);
    const bool isKnown = isReply(answer) && capabilities.typeId() == QMetaType::QStringList;
    const bool hasMarkup = capabilities.toStringList().contains(QLatin1String("body-markup"));
    // Rather a stray "&lt;" than a stranger's markup.
    m_markup = isKnown && !hasMarkup ? Markup::Plain : Markup::Escaped;
    sendWhatIsReady();
    if (!isKnown) {
        m_markup = Markup::Unknown; // the next text asks again
    }
}

void DesktopNotifications::handleOwnerChange(const QString &newOwner)
{
    ++m_round;
    m_owner = newOwner;
    m_markup = Markup::Unknown;
    for (const auto &entry : m_entries) {
        entry->serverId = 0;
    }
    sendWhatIsReady();
}

void DesktopNotifications::handleClosed(const QDBusMessage &signal)
{
    const QVariant id = signal.arguments().value(0);
    if (id.typeId() != QMetaType::UInt || signal.service() != m_owner) {
        return;
    }
    for (const auto &entry : m_entries) {
        if (entry->serverId == id.toUInt()) {
            entry->serverId = 0;
        }
    }
    sendWhatIsReady();
}

} // namespace velmora
