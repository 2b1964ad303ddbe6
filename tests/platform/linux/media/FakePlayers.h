#pragma once

#include <QProcess>
#include <QTest>

namespace velmora::test
{

/// The process that plays the players. Its commands are told in fake_player.cpp.
class FakePlayers
{
public:
    FakePlayers()
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(FAKE_PLAYER), QStringList());
    }
    FakePlayers(const FakePlayers &) = delete;
    FakePlayers &operator=(const FakePlayers &) = delete;
    ~FakePlayers() { kill(); }

    /// Does what a JSON object says in which ' stands for "; the main loop runs on.
    void tell(QByteArray command)
    {
        m_process.write(command.replace('\'', '"') + '\n');
        QVERIFY2(QTest::qWaitFor([this] { return readLines(), m_lines.removeOne("done"); }, 20'000),
                 command.constData());
    }

    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    /// How often a player has been called by this method so far ("a GetAll").
    int calls(const QByteArray &call)
    {
        readLines();
        return static_cast<int>(m_lines.count(call));
    }

private:
    void readLines()
    {
        while (m_process.canReadLine())
            m_lines.append(m_process.readLine().trimmed());
    }

    QProcess m_process;
    QByteArrayList m_lines;
};

} // namespace velmora::test
