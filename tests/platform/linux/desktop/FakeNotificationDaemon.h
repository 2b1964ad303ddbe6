#pragma once

#include "support/BusPeer.h"

#include <QDBusContext>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <optional>
#include <utility>

namespace velmora::test
{

/// A daemon of notifications that answers well, late, with nonsense or not at all.
class FakeNotificationDaemon : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    struct Shown {
        QString application;
        uint replaces = 0;
        QString icon;
        QString summary;
        QString body;
        QStringList actions;
        QVariantMap hints;
        int lifetime = 0;
        uint id = 0;
    };

    static QString interface() { return QStringLiteral("org.freedesktop.Notifications"); }
    static QString path() { return QStringLiteral("/org/freedesktop/Notifications"); }

    explicit FakeNotificationDaemon(const QString &name)
        : m_peer(name)
    {
    }

    void start()
    {
        m_peer.connection().registerObject(path(), this, QDBusConnection::ExportScriptableSlots);
        m_peer.connection().registerService(interface());
    }
    void stop()
    {
        m_peer.connection().unregisterService(interface());
        m_peer.connection().unregisterObject(path());
    }

    [[nodiscard]] BusPeer &peer() { return m_peer; }

    /// Answers what was held back.
    void release()
    {
        holds = false;
        for (const QDBusMessage &answer : std::exchange(m_held, {})) {
            m_peer.connection().send(answer);
        }
    }
    void tellClosed(const QVariantList &arguments) { tellClosed(m_peer.connection(), arguments); }
    static void tellClosed(const QDBusConnection &teller, const QVariantList &arguments)
    {
        QDBusMessage signal =
            QDBusMessage::createSignal(path(), interface(), QStringLiteral("NotificationClosed"));
        signal.setArguments(arguments);
        teller.send(signal);
    }

    /// What was shown, as "text" or "text replaces 7".
    [[nodiscard]] QStringList told() const
    {
        QStringList told;
        for (const Shown &each : shown) {
            told << (each.replaces == 0
                         ? each.body
                         : QStringLiteral("%1 replaces %2").arg(each.body).arg(each.replaces));
        }
        return told;
    }

    QList<Shown> shown;
    uint lastId = 0;
    bool holds = false;
    QVariantList capabilities{QStringList{QStringLiteral("body")}};
    int questions = 0;                     ///< for the capabilities
    std::optional<QVariantList> oddAnswer; ///< in the place of an id
    bool refuses = false;

public Q_SLOTS:
    Q_SCRIPTABLE uint Notify(const QString &application, uint replaces, const QString &icon,
                             const QString &summary, const QString &body,
                             const QStringList &actions, const QVariantMap &hints, int lifetime)
    {
        const uint id = replaces == 0 ? ++lastId : replaces;
        shown << Shown{application, replaces, icon, summary, body, actions, hints, lifetime, id};
        answer(oddAnswer.value_or(QVariantList{id}));
        return 0;
    }
    Q_SCRIPTABLE QStringList GetCapabilities()
    {
        ++questions;
        answer(capabilities);
        return {};
    }

    /// Answered after all that was called before.
    Q_SCRIPTABLE void Settle() {}

private:
    void answer(const QVariantList &arguments)
    {
        setDelayedReply(true);
        const QDBusMessage reply =
            refuses ? message().createErrorReply(QDBusError::Failed, QStringLiteral("no"))
                    : message().createReply(arguments);
        if (holds) {
            m_held << reply;
        } else {
            m_peer.connection().send(reply);
        }
    }

    BusPeer m_peer;
    QList<QDBusMessage> m_held;
};

} // namespace velmora::test
