#pragma once

#include <QMutex>
#include <QStringList>
#include <QTest>
#include <QtGlobal>

namespace velmora
{

/// Gathers every warning that comes up while it lives, those of QML included, so that a test can
/// insist on there being none. Make one for each test function: Qt Test puts its own handler in
/// front of those that are older than the run.
class QmlWarnings
{
public:
    QmlWarnings()
    {
        s_messages.clear();
        s_previous = qInstallMessageHandler(&QmlWarnings::handle);
    }
    QmlWarnings(const QmlWarnings &) = delete;
    QmlWarnings &operator=(const QmlWarnings &) = delete;
    ~QmlWarnings() { qInstallMessageHandler(s_previous); }

    [[nodiscard]] QStringList list() const
    {
        const QMutexLocker lock(&s_mutex);
        return s_messages;
    }

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        // What the offscreen platform cannot do says nothing about the program.
        if (type != QtDebugMsg && type != QtInfoMsg &&
            !message.contains(QStringLiteral("This plugin does not support"))) {
            const QMutexLocker lock(&s_mutex);
            s_messages << message;
        }
        s_previous(type, context, message);
    }

    static inline QMutex s_mutex;
    static inline QStringList s_messages;
    static inline QtMessageHandler s_previous = nullptr;
};

/// Fails the test function in which it ends, if there were any.
class NoQmlWarnings
{
public:
    NoQmlWarnings() = default;
    NoQmlWarnings(const NoQmlWarnings &) = delete;
    NoQmlWarnings &operator=(const NoQmlWarnings &) = delete;
    ~NoQmlWarnings()
    {
        if (const QStringList list = m_warnings.list(); !list.isEmpty()) {
            QTest::qFail(qPrintable(list.join(u'\n')), __FILE__, __LINE__);
        }
    }

private:
    QmlWarnings m_warnings;
};

} // namespace velmora
