#include "FileSamples.h"
#include "platform/LocalPath.h"
#include "platform/linux/files/FileItems.h"
#include "platform/linux/files/GioApplications.h"

#include <QProcess>
#include <QTest>

using namespace velmora;

/// What other programs of the desktop do for us: opening, the trash, volumes. Needs the folders of
/// a desktop of its own.
class ApplicationsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void findsApplications();
    void filesArriveInTheApplication();
    void nobodyToOpen();
    void trash();

private:
    void addApplication(const QByteArray &id, const QByteArray &types, const QByteArray &field);
    QList<Application> find(const QByteArray &path);
    /// What an application wrote down of its start.
    QByteArray started(const QByteArray &id);

    QByteArray m_home;
    GioApplications m_applications{{"VELMORA_OWN"}};
};

void ApplicationsTest::initTestCase()
{
    m_home = qgetenv("HOME");
    qputenv("VELMORA_OWN", "inherited"); // by us, and by nobody after us
    QVERIFY2(qEnvironmentVariableIsSet("VELMORA_DESKTOP"), "runs in tests/support/desktop only");
    const QByteArray folder = qgetenv("XDG_DATA_HOME") + "/applications";
    makeFolders(folder);
    addApplication("viewer", "text/plain;image/png;inode/directory;", "%F");
    addApplication("editor", "text/plain;", "%U");
    addApplication("player", "audio/mpeg;", "%U");
    writeFile(qgetenv("XDG_CONFIG_HOME") + "/mimeapps.list",
              "[Default Applications]\ntext/plain=editor.desktop\n");
    QCOMPARE(
        QProcess::execute(QStringLiteral("update-desktop-database"), {QString::fromUtf8(folder)}),
        0);
}

/// It writes its arguments and one variable to a file, and then renames that.
void ApplicationsTest::addApplication(const QByteArray &id, const QByteArray &types,
                                      const QByteArray &field)
{
    const QByteArray script = m_home + '/' + id + ".sh";
    const QByteArray file = m_home + '/' + id;
    writeFile(script, "#!/bin/sh\n{ printf '<%s>' \"$@\"; echo \"$VELMORA_OWN\"; } >>" + file +
                          ".part; mv " + file + ".part " + file + "\n");
    chmod(script.constData(), 0755);
    writeFile(qgetenv("XDG_DATA_HOME") + "/applications/" + id + ".desktop",
              "[Desktop Entry]\nType=Application\nName=The " + id + "\nIcon=" + id +
                  "-icon\nExec=" + script + ' ' + field + "\nMimeType=" + types + '\n');
}

QList<Application> ApplicationsTest::find(const QByteArray &path)
{
    return answerOf<QList<Application>>(
        [&](const auto &done) { m_applications.findForFile(fileUrl(path), done); });
}

QByteArray ApplicationsTest::started(const QByteArray &id)
{
    const QByteArray path = m_home + '/' + id;
    [&] { QTRY_VERIFY_WITH_TIMEOUT(isThere(path), 10'000); }();
    return readFile(path);
}

void ApplicationsTest::findsApplications()
{
    const QByteArray path = m_home + "/a\xFF\nb.txt";
    writeFile(path, "text");
    const auto found = find(path);
    QVERIFY(found.size() >= 2);
    const auto known = [](const QString &id) {
        return Application{id + u".desktop"_qs, u"The "_qs + id, id + u"-icon"_qs};
    };
    QCOMPARE(found.at(0), known(u"editor"_qs));
    QVERIFY(found.contains(known(u"viewer"_qs)));
    writeFile(m_home + "/a.velmora-unknown", QByteArray("\0\1\2", 3));
    QVERIFY(find(m_home + "/a.velmora-unknown").isEmpty());
    QVERIFY(find(m_home + "/gone.txt").isEmpty());

    const auto role = [this](const char *identifier) {
        return answerOf<std::optional<Application>>([&](const auto &done) {
                   m_applications.findByIdentifier(QString::fromLatin1(identifier), done);
               })
            .value_or(Application())
            .id;
    };
    QCOMPARE(role("com.apple.Music"), QStringLiteral("player.desktop"));
    QCOMPARE(role("com.example.Nobody"), QString());
}

void ApplicationsTest::filesArriveInTheApplication()
{
    const QByteArray path = m_home + "/\xFF '\"$(id).png";
    writeFile(path, "x");
    writeFile(m_home + "/-b.txt", "x");
    const QList<QUrl> files{fileUrl(path), fileUrl(m_home + "/-b.txt")};
    m_applications.open(files, {QStringLiteral("viewer.desktop"), {}, {}});
    QCOMPARE(started("viewer"), '<' + path + "><" + m_home + "/-b.txt>\n");
    m_applications.open(files.last()); // in the default application
    QCOMPARE(started("editor"), '<' + m_home + "/-b.txt>\n");
}

void ApplicationsTest::nobodyToOpen()
{
    m_applications.open({fileUrl(m_home)}, {QStringLiteral("gone.desktop"), {}, {}});
    for (const char *url : {"file:///no/such/file", "velmora-test:x", "", "file://host/a"}) {
        m_applications.open(QUrl(QString::fromLatin1(url)));
    }
    // Answers come in order: the one behind them shows that all have been dealt with.
    QVERIFY(find(m_home + "/gone").isEmpty());
}

void ApplicationsTest::trash()
{
    const QByteArray path = m_home + "/thrown \xFF away";
    writeFile(path, "x");
    symlink("/no/such/file", (m_home + "/link").constData());
    trashItem(path);
    trashItem(m_home + "/link");
    QVERIFY(!isThere(path) && !isThere(m_home + "/link"));
    const QByteArray trashed = qgetenv("XDG_DATA_HOME") + "/Trash/files";
    QCOMPARE(readFile(trashed + "/thrown \xFF away"), QByteArray("x"));
    QVERIFY(isThere(trashed + "/link"));

    QVERIFY_EXCEPTION_THROWN(trashItem(m_home + "/gone"), FileFailure);
    const QByteArray elsewhere = folderElsewhere(m_home);
    if (!elsewhere.isEmpty()) {
        writeFile(elsewhere + "/a");
        QVERIFY_EXCEPTION_THROWN(trashItem(elsewhere + "/a"), FileFailure);
        QVERIFY(isThere(elsewhere + "/a"));
        unlink((elsewhere + "/a").constData());
        rmdir(elsewhere.constData());
    }
}

QTEST_GUILESS_MAIN(ApplicationsTest)
#include "ApplicationsTest.moc"
