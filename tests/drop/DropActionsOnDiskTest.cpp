#include "drop/DropActionsService.h"
#include "platform/LocalPath.h"
#include "platform/linux/files/LinuxChildProcesses.h"
#include "platform/linux/files/LinuxFileActions.h"
#include "platform/linux/files/LinuxImageConverter.h"
#include "support/FakeDropRoles.h"
#include "support/MemoryStore.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace velmora;
using enum DropActionID;

namespace
{

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

/// Drops as they end on a disk, by way of the real archivers. Only programs of the desktop are
/// played by doubles.
class DropActionsOnDiskTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void theShelfIsMadeAndFilled();
    void zipAndUnzipBringEverythingBack();
    void archivesByOddNames();
    void manyFilesAndOddLines();
    void twoArchivesAtOnce();
    void linksInArchives();
    void archivesThatFail();

private:
    void start(DropActionID action, const QStringList &names);
    /// Waits for the summary, and returns it.
    QString perform(DropActionID action, const QStringList &names);
    void write(const QString &name, const QByteArray &content);
    [[nodiscard]] QByteArray read(const QString &name) const;
    /// What is in an archive, without the test's own folder: contents by names.
    [[nodiscard]] QMap<QString, QByteArray> archived(const QString &name) const;
    [[nodiscard]] QStringList list(const QString &folder = {}) const
    {
        return QDir(path(folder))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }
    [[nodiscard]] QString path(const QString &name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
    LinuxFileActions m_files;
    LinuxImageConverter m_images;
    LinuxChildProcesses m_processes;
    FakeDropRoles m_fake;
    MemoryStore m_store;
    std::unique_ptr<DropActionsService> m_service;
};

void DropActionsOnDiskTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("HOME", QFile::encodeName(m_folder->path()));
    DropRoles roles = m_fake.roles();
    m_service = std::make_unique<DropActionsService>(
        m_store, DropRoles{m_files, m_images, m_processes, roles.applications, roles.volumes,
                           roles.sharing});
    QTRY_COMPARE(list(text("Desktop")), QStringList(text("Velmora Shelf")));
}

void DropActionsOnDiskTest::start(DropActionID action, const QStringList &names)
{
    QList<QUrl> urls;
    for (const QString &name : names) {
        urls << QUrl::fromLocalFile(path(name));
    }
    m_service->execute(action, urls);
}

QString DropActionsOnDiskTest::perform(DropActionID action, const QStringList &names)
{
    QSignalSpy said(m_service.get(), &DropActionsService::lastStatusChanged);
    start(action, names);
    return said.wait(20'000) ? m_service->lastStatus() : text("no answer");
}

void DropActionsOnDiskTest::write(const QString &name, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path(name)).path());
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QByteArray DropActionsOnDiskTest::read(const QString &name) const
{
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QMap<QString, QByteArray> DropActionsOnDiskTest::archived(const QString &name) const
{
    QProcess python;
    python.start(text("python3"),
                 {text("-c"),
                  text("import json,sys,zipfile as z; a=z.ZipFile(sys.argv[1]); "
                       "print(json.dumps({n: a.read(n).decode() for n in a.namelist()}))"),
                  path(name)});
    python.waitForFinished();
    QMap<QString, QByteArray> contents;
    const auto object = QJsonDocument::fromJson(python.readAllStandardOutput()).object();
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        contents[entry.key().mid(m_folder->path().size())] = entry.value().toString().toUtf8();
    }
    return contents;
}

void DropActionsOnDiskTest::theShelfIsMadeAndFilled()
{
    const QString folder = text("Desktop/Velmora Shelf");
    QDir(path(folder)).removeRecursively();
    write(text("a.txt"), "1");
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(perform(shelf, {text("a.txt")}), text("Shelf — done"));
    }
    QCOMPARE(list(folder), QStringList({text("a 1.txt"), text("a 2.txt"), text("a.txt")}));
    QCOMPARE(m_fake.calls, QStringList(3, text("open ") + path(folder)));
}

void DropActionsOnDiskTest::zipAndUnzipBringEverythingBack()
{
    write(text("in/Docs/deep/a.txt"), "deep");
    write(text("in/b"), "b");
    QCOMPARE(perform(zip, {text("in/Docs"), text("in/b")}), text("Zip — done"));
    QCOMPARE(perform(zip, {text("in/Docs")}), text("Zip — done"));
    QCOMPARE(list(text("in")),
             QStringList({text("Archive.zip"), text("Docs"), text("Docs.zip"), text("b")}));
    // Twice: what is there is overwritten without a question.
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(perform(unzip, {text("in/Archive.zip"), text("in/b")}), text("Unzip — done"));
        const QString unpacked = text("in/Archive") + m_folder->path();
        QCOMPARE(read(unpacked + text("/in/Docs/deep/a.txt")), QByteArray("deep"));
        QCOMPARE(read(unpacked + text("/in/b")), QByteArray("b"));
    }
}

void DropActionsOnDiskTest::archivesByOddNames()
{
    write(text("a1"), "other"); // what a pattern would find instead
    QCOMPARE(perform(zip, {text("a1")}), text("Zip — done"));
    for (const char *odd : {"-rf", "a[1]", "*", "b?", "c\\d", "[x]\\*", "@", "e f'\"$(id)", "ö"}) {
        const QString name = text(odd);
        write(name, "content");
        QCOMPARE(perform(zip, {name}), text("Zip — done"));
        QVERIFY2(list().contains(name + text(".zip")), odd);
        QVERIFY(QFile::remove(path(name)));
        QCOMPARE(perform(unzip, {name + text(".zip")}), text("Unzip — done"));
        QCOMPARE(read(name + m_folder->path() + QLatin1Char('/') + name), QByteArray("content"));
    }
}

void DropActionsOnDiskTest::manyFilesAndOddLines()
{
    QStringList names{text("a\nb"), text("c\rd"), text(" e ")};
    const QString folder = (QString(250, u'x') + u'/').repeated(10);
    for (int i = 0; i < 1000; ++i) { // more than the two megabytes that arguments may take
        names << folder + QString::number(i);
    }
    for (const QString &name : names) {
        write(name, "content");
    }
    QCOMPARE(perform(zip, names), text("Zip — done"));
    QCOMPARE(archived(text("Archive.zip")).size(), names.size());
    for (const QString &name : names.mid(0, 4)) {
        QCOMPARE(archived(text("Archive.zip")).value(name), QByteArray("content"));
    }
}

void DropActionsOnDiskTest::twoArchivesAtOnce()
{
    for (const char *name : {"a", "b", "c"})
        write(text(name), name);
    const QSignalSpy said(m_service.get(), &DropActionsService::lastStatusChanged);
    start(zip, {text("a"), text("b")});
    start(zip, {text("a"), text("c")});
    QTRY_COMPARE(said.size(), 4);
    QCOMPARE(list().filter(text("rchive")).size(), 2);
    QList<QByteArray> found;
    for (const char *name : {"Archive.zip", "Archive 1.zip"}) {
        const auto archive = archived(text(name));
        QCOMPARE(archive.value(text("a")), QByteArray("a"));
        found << archive.value(text("b")) + archive.value(text("c"));
    }
    std::sort(found.begin(), found.end());
    QCOMPARE(found, (QList<QByteArray>{"b", "c"}));
}

void DropActionsOnDiskTest::linksInArchives()
{
    write(text("in/Docs/a"), "a");
    for (const char *name : {"in/Docs/one", "in/Docs/two", "to folder"}) {
        QFile::link(path(text("in/Docs")), path(text(name)));
    }
    QFile::link(path(text("in/Docs/a")), path(text("to file")));
    QFile::link(text("/no/such/file"), path(text("to nothing")));
    // What was dropped is followed; what is inside leads in circles.
    QCOMPARE(
        perform(zip, {text("in/Docs"), text("to folder"), text("to file"), text("to nothing")}),
        text("Zip — done"));
    const QByteArray circle = QFile::encodeName(path(text("in/Docs")));
    const QMap<QString, QByteArray> expected{
        {text("in/Docs/"), {}},          {text("in/Docs/a"), "a"},
        {text("in/Docs/one"), circle},   {text("in/Docs/two"), circle},
        {text("to folder/"), {}},        {text("to folder/a"), "a"},
        {text("to folder/one"), circle}, {text("to folder/two"), circle},
        {text("to file"), "a"},          {text("to nothing"), "/no/such/file"},
    };
    QCOMPARE(archived(text("in/Archive.zip")), expected);
}

void DropActionsOnDiskTest::archivesThatFail()
{
    write(text("bad.zip"), "no archive at all");
    write(text("good"), "x");
    QCOMPARE(perform(zip, {text("good")}), text("Zip — done"));
    QCOMPARE(perform(unzip, {text("bad.zip"), text("good.zip")}),
             text("Unzip failed: Process exited 9"));
    QVERIFY(list().contains(text("bad"))); // stays, empty
    QCOMPARE(perform(unzip, {text("good.zip")}), text("Unzip failed: good: Not a directory"));
    QCOMPARE(perform(zip, {text("gone")}), text("Zip failed: Process exited 12"));
    m_service->execute(zip, {QUrl(text("http://host/a"))});
    QTRY_COMPARE(m_service->lastStatus(), text("Zip failed: a: Not a file of this computer"));

    // Nobody is asked for a password.
    QCOMPARE(
        QProcess::execute(text("/usr/bin/zip"), {text("-q"), text("-P"), text("word"),
                                                 path(text("secret.zip")), path(text("good"))}),
        0);
    const QString said = perform(unzip, {text("secret.zip")});
    QVERIFY2(said.startsWith(text("Unzip failed: Process exited ")), qPrintable(said));
}

QTEST_GUILESS_MAIN(DropActionsOnDiskTest)
#include "DropActionsOnDiskTest.moc"
