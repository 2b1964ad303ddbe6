#pragma once

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>
#include <QVariantMap>

namespace velmora
{

/// The MPRIS players of a bus, told apart by the unique name of their connection: a program may own
/// several names. Everything is asynchronous, and everything arrives in the order in which the
/// player sent it, answers among signals: an answer is never older than what came before it.
class MprisBus : public QObject
{
    Q_OBJECT

public:
    enum class Question { Properties, Position };

    explicit MprisBus(const QDBusConnection &connection);

    /// Called once; false if there is no bus. Players that are there already are told of later.
    [[nodiscard]] bool start();

    /// Is answered by `propertiesAnswered`, `positionAnswered` or `questionFailed`.
    void ask(Question question, const QString &player);
    /// Sends and forgets.
    void command(const QString &player, const QString &method);

Q_SIGNALS:
    /// `name` lacks what all players' names begin with.
    void nameAppeared(const QString &player, const QString &name);
    void nameVanished(const QString &player, const QString &name);

    void propertiesAnswered(const QString &player, const QVariantMap &properties);
    void positionAnswered(const QString &player, const QVariant &microseconds);
    void questionFailed(velmora::MprisBus::Question question, const QString &player,
                        const QDBusError &error);

    /// Senders of these may be no players. `isPartial`: something has changed that is not told.
    void propertiesChanged(const QString &sender, const QVariantMap &properties, bool isPartial);
    void seeked(const QString &sender, const QVariant &microseconds);

private Q_SLOTS:
    // Found by name, since only so do answers keep their place among the signals.
    void takeProperties(const QDBusMessage &answer);
    void takePosition(const QDBusMessage &answer);
    void takeFailure(const QDBusError &error, const QDBusMessage &question);
    void takePropertiesChanged(const QDBusMessage &signal);
    void takeSeeked(const QDBusMessage &signal);
    void takeDisconnection();

private:
    void listNames();
    void askOwner(const QString &name);
    void setOwner(const QString &name, const QString &owner);

    QDBusConnection m_connection;
    QDBusServiceWatcher m_watcher;
    QHash<QString, QString> m_owners; ///< by full name
    QSet<QString> m_ownerAsked;       ///< names whose owner is being asked for
};

} // namespace velmora
