#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
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
    ~FakePlayers()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }

    /// A JSON object in which ' stands for ". True when it has been done; the main loop runs on.
    bool tell(QByteArray command)
    {
        m_process.write(command.replace('\'', '"') + '\n');
        return QTest::qWaitFor([this] { return readLines(), m_lines.removeOne("done"); }, 20'000);
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
