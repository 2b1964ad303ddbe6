#pragma once

#include <QFile>
#include <QLocalServer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

namespace velmora::test
{

/// A message bus of a test's own, at one address throughout, that can hang, end and come back.
class BusDaemon
{
public:
    [[nodiscard]] QByteArray address() const { return "unix:path=" + QFile::encodeName(m_path); }

    /// Takes connections from now on, and answers nobody.
    void hang()
    {
        m_hanging.emplace();
        QVERIFY(m_hanging->listen(m_path));
    }

    /// A bus that works, in the place of whatever was there.
    void start()
    {
        m_hanging.reset();
        QFile::remove(m_path);
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--session"), QStringLiteral("--nofork"),
                        QStringLiteral("--print-address"),
                        QStringLiteral("--address=") + QString::fromUtf8(address())});
        QVERIFY(m_daemon.waitForStarted());
    }

    void kill()
    {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }

    ~BusDaemon() { kill(); }

private:
    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath(QStringLiteral("bus"));
    std::optional<QLocalServer> m_hanging;
    QProcess m_daemon;
};

} // namespace velmora::test
