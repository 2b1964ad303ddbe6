#include "drop/DropActionsService.h"
#include "platform/LocalPath.h"
#include "platform/linux/files/LinuxChildProcesses.h"
#include "platform/linux/files/LinuxFileActions.h"
#include "platform/linux/files/LinuxImageConverter.h"
#include "support/FakeDropRoles.h"
#include "support/MemoryStore.h"

#include <QImage>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace velmora;

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
    void archivesByOddNames_data();
    void archivesByOddNames();
    void damagedArchive();
    void encryptedArchiveAsksNobody();
    void convertingBesideTheSource();
    void copyAndMove();

private:
    /// Waits for the summary, and returns it.
    QString perform(DropActionID action, const QStringList &names);
    void write(const QString &name, const QByteArray &content);
    [[nodiscard]] QByteArray read(const QString &name) const;
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
    std::unique_ptr<FakeDropRoles> m_fake;
    std::unique_ptr<MemoryStore> m_store;
    std::unique_ptr<DropActionsService> m_service;
};

void DropActionsOnDiskTest::init()
{
    m_service.reset();
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("HOME", QFile::encodeName(m_folder->path()));
    m_fake = std::make_unique<FakeDropRoles>();
    m_store = std::make_unique<MemoryStore>();
    DropRoles roles = m_fake->roles();
    m_service = std::make_unique<DropActionsService>(
        *m_store, DropRoles{m_files, m_images, m_processes, roles.applications, roles.volumes,
                            roles.sharing});
    QTRY_COMPARE(list(text("Desktop")), QStringList(text("Velmora Shelf")));
}

QString DropActionsOnDiskTest::perform(DropActionID action, const QStringList &names)
{
    QList<QUrl> urls;
    for (const QString &name : names) {
        urls << QUrl::fromLocalFile(path(name));
    }
    QSignalSpy said(m_service.get(), &DropActionsService::lastStatusChanged);
    m_service->execute(action, urls);
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

void DropActionsOnDiskTest::theShelfIsMadeAndFilled()
{
    const QString shelf = text("Desktop/Velmora Shelf");
    QDir(path(shelf)).removeRecursively();
    write(text("a.txt"), "1");
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(perform(DropActionID::shelf, {text("a.txt")}), text("Shelf — done"));
    }
    QCOMPARE(list(shelf), QStringList({text("a 1.txt"), text("a 2.txt"), text("a.txt")}));
    QCOMPARE(m_fake->calls, QStringList(3, text("open ") + path(shelf)));
}

void DropActionsOnDiskTest::zipAndUnzipBringEverythingBack()
{
    write(text("in/Docs/deep/a.txt"), "deep");
    write(text("in/b"), "b");
    QCOMPARE(perform(DropActionID::zip, {text("in/Docs"), text("in/b")}), text("Zip — done"));
    QCOMPARE(perform(DropActionID::zip, {text("in/Docs")}), text("Zip — done"));
    QCOMPARE(perform(DropActionID::zip, {text("in/Docs")}), text("Zip — done"));
    QCOMPARE(list(text("in")), QStringList({text("Archive.zip"), text("Docs"), text("Docs 1.zip"),
                                            text("Docs.zip"), text("b")}));
    // Twice: what is there is overwritten without a question.
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(perform(DropActionID::unzip, {text("in/Archive.zip"), text("in/b")}),
                 text("Unzip — done"));
        const QString unpacked = text("in/Archive") + m_folder->path();
        QCOMPARE(read(unpacked + text("/in/Docs/deep/a.txt")), QByteArray("deep"));
        QCOMPARE(read(unpacked + text("/in/b")), QByteArray("b"));
    }
}

void DropActionsOnDiskTest::archivesByOddNames_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"-rf", "a[1]", "*", "b?", "c\\d", "[x]\\*", "@", "e f'\"$(id)", "ö"}) {
        QTest::newRow(name) << text(name);
    }
}

void DropActionsOnDiskTest::archivesByOddNames()
{
    QFETCH(const QString, name);
    write(text("a1"), "other"); // what a pattern would find instead
    QCOMPARE(perform(DropActionID::zip, {text("a1")}), text("Zip — done"));
    write(name, "content");
    QCOMPARE(perform(DropActionID::zip, {name}), text("Zip — done"));
    QVERIFY(list().contains(name + text(".zip")));
    QVERIFY(QFile::remove(path(name)));
    QCOMPARE(perform(DropActionID::unzip, {name + text(".zip")}), text("Unzip — done"));
    QCOMPARE(read(name + m_folder->path() + QLatin1Char('/') + name), QByteArray("content"));
}

void DropActionsOnDiskTest::damagedArchive()
{
    write(text("bad.zip"), "no archive at all");
    write(text("good"), "x");
    QCOMPARE(perform(DropActionID::zip, {text("good")}), text("Zip — done"));
    QVERIFY(QFile::remove(path(text("good"))));
    QCOMPARE(perform(DropActionID::unzip, {text("bad.zip"), text("good.zip")}),
             text("Unzip failed: Process exited 9"));
    QVERIFY(list().contains(text("bad"))); // stays, empty
    QVERIFY(!list().contains(text("good")));
    QCOMPARE(perform(DropActionID::zip, {text("gone")}), text("Zip failed: Process exited 12"));
}

void DropActionsOnDiskTest::encryptedArchiveAsksNobody()
{
    write(text("secret"), "x");
    QCOMPARE(
        QProcess::execute(text("/usr/bin/zip"), {text("-q"), text("-P"), text("word"),
                                                 path(text("secret.zip")), path(text("secret"))}),
        0);
    QVERIFY(QFile::remove(path(text("secret"))));
    const QString said = perform(DropActionID::unzip, {text("secret.zip")});
    QVERIFY2(said.startsWith(text("Unzip failed: Process exited ")), qPrintable(said));
}

void DropActionsOnDiskTest::convertingBesideTheSource()
{
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(Qt::red);
    QVERIFY(image.save(path(text("a.png"))));
    write(text("b.pdf"), "pdf");
    write(text("c.jpg"), "damaged");
    const QSignalSpy said(m_service.get(), &DropActionsService::lastStatusChanged);
    QCOMPARE(perform(DropActionID::imageConvert, {text("a.png"), text("b.pdf"), text("c.jpg")}),
             text("Convert — done"));
    m_service->setImageConvertFormat(text("jpeg"));
    QCOMPARE(perform(DropActionID::imageConvert, {text("a.png")}), text("Convert — done"));
    QVERIFY(list().contains(text("a 1.png")) && list().contains(text("a.jpg")));
    QVERIFY(!QImage(path(text("a.jpg"))).isNull());
    QCOMPARE(said.size(), 4);
}

void DropActionsOnDiskTest::copyAndMove()
{
    write(text("x.app/in"), "x");
    write(text("copies/x.app"), "in the way");
    m_service->setCopyFolder(QUrl::fromLocalFile(path(text("copies"))));
    m_service->setMoveFolder(QUrl::fromLocalFile(path(text("moved"))));
    QCOMPARE(perform(DropActionID::copy, {text("x.app")}), text("Copy — done"));
    QCOMPARE(read(text("copies/x 1.app/in")), QByteArray("x"));
    // The folder is never made.
    QCOMPARE(perform(DropActionID::move, {text("x.app")}),
             text("Move failed: moved: No such file or directory"));
    QVERIFY(QDir().mkdir(path(text("moved"))));
    QCOMPARE(perform(DropActionID::move, {text("x.app")}), text("Move — done"));
    QCOMPARE(read(text("moved/x.app/in")), QByteArray("x"));
    QVERIFY(!list().contains(text("x.app")));
}

QTEST_GUILESS_MAIN(DropActionsOnDiskTest)
#include "DropActionsOnDiskTest.moc"
