#include "platform/linux/media/MprisBus.h"

#include "platform/linux/BusCall.h"
#include "platform/linux/dbus/BusValue.h"

#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QLoggingCategory>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcMpris, "com.velmora.app.Mpris", QtInfoMsg)

constexpr int answerTimeout = 5000; // milliseconds

const QString &namePrefix()
{
    static const auto prefix = QStringLiteral("org.mpris.MediaPlayer2.");
    return prefix;
}

const QString &objectPath()
{
    static const auto path = QStringLiteral("/org/mpris/MediaPlayer2");
    return path;
}

const QString &playerInterface()
{
    static const auto interface = QStringLiteral("org.mpris.MediaPlayer2.Player");
    return interface;
}

const QString &propertiesInterface()
{
    static const auto interface = QStringLiteral("org.freedesktop.DBus.Properties");
    return interface;
}

bool isPlayer(const QString &name)
{
    // playerctld repeats what another player says.
    return name.startsWith(namePrefix()) &&
           name != QLatin1String("org.mpris.MediaPlayer2.playerctld");
}

} // namespace

MprisBus::MprisBus(const QDBusConnection &connection)
    : m_connection(connection)
{
}

bool MprisBus::start()
{
    if (!m_connection.isConnected())
        return false;
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &name, const QString &, const QString &newOwner) {
                m_ownerAsked.remove(name); // this is newer than any answer
                setOwner(name, newOwner);
            });
    m_watcher.setConnection(m_connection);
    m_watcher.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    m_watcher.addWatchedService(QStringLiteral("org.mpris.MediaPlayer2*"));

    // Without a sender: QtDBus would wait for the bus to tell who owns the name.
    m_connection.connect(QString(), objectPath(), propertiesInterface(),
                         QStringLiteral("PropertiesChanged"), {playerInterface()}, QString(), this,
                         SLOT(takePropertiesChanged(QDBusMessage)));
    m_connection.connect(QString(), objectPath(), playerInterface(), QStringLiteral("Seeked"), this,
                         SLOT(takeSeeked(QDBusMessage)));
    m_connection.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                         QStringLiteral("org.freedesktop.DBus.Local"),
                         QStringLiteral("Disconnected"), this, SLOT(takeDisconnection()));
    listNames();
    return true;
}

void MprisBus::ask(Question question, const QString &player)
{
    const bool isPosition = question == Question::Position;
    QDBusMessage call = QDBusMessage::createMethodCall(player, objectPath(), propertiesInterface(),
                                                       isPosition ? QStringLiteral("Get")
                                                                  : QStringLiteral("GetAll"));
    call << playerInterface();
    if (isPosition)
        call << QStringLiteral("Position");
    m_connection.callWithCallback(call, this,
                                  isPosition ? SLOT(takePosition(QDBusMessage))
                                             : SLOT(takeProperties(QDBusMessage)),
                                  SLOT(takeFailure(QDBusError, QDBusMessage)), answerTimeout);
}

void MprisBus::command(const QString &player, const QString &method)
{
    m_connection.send(
        QDBusMessage::createMethodCall(player, objectPath(), playerInterface(), method));
}

void MprisBus::takeProperties(const QDBusMessage &answer)
{
    Q_EMIT propertiesAnswered(answer.service(),
                              toDictionary(answer.arguments().value(0)).value_or(QVariantMap()));
}

void MprisBus::takePosition(const QDBusMessage &answer)
{
    Q_EMIT positionAnswered(answer.service(), answer.arguments().value(0));
}

void MprisBus::takeFailure(const QDBusError &error, const QDBusMessage &question)
{
    qCDebug(lcMpris) << question.service() << question.member() << error.name();
    const bool isPosition = question.member() == QLatin1String("Get");
    Q_EMIT questionFailed(isPosition ? Question::Position : Question::Properties,
                          question.service(), error);
}

void MprisBus::takePropertiesChanged(const QDBusMessage &signal)
{
    const QVariantList arguments = signal.arguments();
    const auto properties = toDictionary(arguments.value(1));
    if (toText(arguments.value(0)) != playerInterface() || !properties)
        return;
    const bool isPartial = !arguments.value(2).toStringList().isEmpty();
    Q_EMIT propertiesChanged(signal.service(), *properties, isPartial);
}

void MprisBus::takeSeeked(const QDBusMessage &signal)
{
    Q_EMIT seeked(signal.service(), signal.arguments().value(0));
}

void MprisBus::takeDisconnection()
{
    qCWarning(lcMpris) << "The session bus is gone";
    m_ownerAsked.clear();
    const QStringList names = m_owners.keys();
    for (const QString &name : names)
        setOwner(name, QString());
}

void MprisBus::listNames()
{
    onAnswer(m_connection.asyncCall(busCall(QStringLiteral("ListNames")), answerTimeout), this,
             [this](const QDBusMessage &answer) {
                 const QStringList names = answer.arguments().value(0).toStringList();
                 for (const QString &name : names) {
                     if (isPlayer(name) && !m_owners.contains(name))
                         askOwner(name);
                 }
             });
}

void MprisBus::askOwner(const QString &name)
{
    QDBusMessage call = busCall(QStringLiteral("GetNameOwner"));
    call << name;
    m_ownerAsked.insert(name);
    onAnswer(m_connection.asyncCall(call, answerTimeout), this,
             [this, name](const QDBusMessage &answer) {
                 if (m_ownerAsked.remove(name) && answer.type() == QDBusMessage::ReplyMessage)
                     setOwner(name, toText(answer.arguments().value(0)));
             });
}

void MprisBus::setOwner(const QString &name, const QString &owner)
{
    if (!isPlayer(name))
        return;
    const QString shortName = name.mid(namePrefix().size());
    const QString previous = m_owners.take(name);
    if (!owner.isEmpty())
        m_owners.insert(name, owner);
    if (previous == owner)
        return;
    if (!previous.isEmpty())
        Q_EMIT nameVanished(previous, shortName);
    if (!owner.isEmpty())
        Q_EMIT nameAppeared(owner, shortName);
}

} // namespace velmora
