#include "drop/DropActionsService.h"

#include "support/FakeDropRoles.h"
#include "support/MemoryStore.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace velmora;
using enum DropActionID;

namespace
{

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QString key()
{
    return text("drop_actions_config_v1");
}

QList<QUrl> files(std::initializer_list<const char *> paths)
{
    QList<QUrl> urls;
    for (const char *path : paths) {
        urls << fileUrl(path);
    }
    return urls;
}

} // namespace

class DropActionsServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void firstLaunch();
    void loading();
    void everySetterWrites();

    void outcomes();
    void statusComesInOneTurn();
    void zipNamesItsArchive();
    void unzipSkipsTheRest();
    void convertingSkipsTheRest();
    void openWithWaitsForTheMenu();
    void theServiceGoesFirst();

private:
    void launch()
    {
        m_fake->calls.clear();
        m_service = std::make_unique<DropActionsService>(m_store, m_fake->roles());
        OpenWithMenu *const menu = m_service->openWithMenu();
        connect(menu, &OpenWithMenu::changed, menu, &OpenWithMenu::setShown);
        m_fake->settle();
    }
    /// Performs an action, and returns all that was said of it.
    QString perform(DropActionID action, const QList<QUrl> &dropped);
    [[nodiscard]] QString calls() const { return m_fake->calls.join(text(", ")); }

    QTemporaryDir m_home;
    MemoryStore m_store;
    std::unique_ptr<FakeDropRoles> m_fake;
    std::unique_ptr<DropActionsService> m_service;
};

void DropActionsServiceTest::init()
{
    qputenv("HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.filePath(text("config"))));
    m_store.values.clear();
    m_store.written.clear();
    m_service.reset();
    m_fake = std::make_unique<FakeDropRoles>();
    launch();
}

QString DropActionsServiceTest::perform(DropActionID action, const QList<QUrl> &dropped)
{
    QStringList said;
    const auto connection = connect(m_service.get(), &DropActionsService::lastStatusChanged,
                                    m_service.get(), [&] { said << m_service->lastStatus(); });
    m_fake->calls.clear();
    m_service->execute(action, dropped);
    [&] { QVERIFY2(said.isEmpty() && m_fake->calls.isEmpty(), "not in the caller's turn"); }();
    m_fake->settle();
    disconnect(connection);
    return said.join(text(", "));
}

void DropActionsServiceTest::firstLaunch()
{
    // A record with one mistake counts as none; it stays until the next change.
    const QByteArray unknown = R"({"enabledActions":["shelf","print"],"shelfFolderPath":"/s",)"
                               R"("copyFolderPath":"/c","moveFolderPath":"/m",)"
                               R"("imageConvertFormat":"bmp"})";
    m_store.values[key()] = unknown;
    launch();
    QCOMPARE(m_store.data(key()), std::optional(unknown));
    const QByteArray desktop = QFile::encodeName(m_home.filePath(text("Desktop")));
    QVERIFY(m_service->enabledActions() == (std::vector{airDrop, zip, unzip}));
    QCOMPARE(m_service->imageConvertFormat(), text("png"));
    QCOMPARE(m_service->copyFolder(), fileUrl(desktop));
    QCOMPARE(m_service->moveFolder(), fileUrl(desktop));
    QCOMPARE(m_service->shelfFolder(), fileUrl(desktop + "/Velmora Shelf"));
    QCOMPARE(calls(), text("mkdir ") + QFile::decodeName(desktop) + text("/Velmora Shelf"));
    QVERIFY(m_store.written.isEmpty());
}

void DropActionsServiceTest::loading()
{
    const QByteArray stored = R"({"moveFolderPath":"/no/such","copyFolderPath":"/c/",)"
                              R"("shelfFolderPath":"/s ö","imageConvertFormat":"WebP",)"
                              R"("enabledActions":["eject","shelf","eject"]})";
    m_store.values[key()] = stored;
    launch();
    QVERIFY(m_service->enabledActions() == (std::vector{eject, shelf}));
    QCOMPARE(m_service->shelfFolder(), fileUrl("/s ö"));
    QCOMPARE(m_service->copyFolder(), fileUrl("/c"));
    QCOMPARE(m_service->moveFolder(), fileUrl("/no/such"));
    QCOMPARE(m_service->imageConvertFormat(), text("WebP"));
    QCOMPARE(m_store.written.size(), 5);
    QCOMPARE(
        m_store.data(key()),
        std::optional(QByteArray(
            R"({"enabledActions":["eject","shelf"],"shelfFolderPath":"/s ö","copyFolderPath":"/c",)"
            R"("moveFolderPath":"/no/such","imageConvertFormat":"WebP"})")));
    QCOMPARE(calls(), text("mkdir /s ö"));
}

void DropActionsServiceTest::everySetterWrites()
{
    const QSignalSpy changes(m_service.get(), &DropActionsService::configChanged);
    m_service->setEnabledActions(m_service->enabledActions());
    m_service->setEnabledActionNames({text("music"), text("print"), text("zip")});
    m_service->setShelfFolder(m_service->shelfFolder());
    m_service->setCopyFolder(fileUrl("/c"));
    m_service->setMoveFolder(fileUrl("/m"));
    m_service->setImageConvertFormat(m_service->imageConvertFormat());
    QCOMPARE(m_store.written.size(), 6);
    QCOMPARE(changes.size(), 6);
    QCOMPARE(m_service->enabledActionNames(), QStringList({text("music"), text("zip")}));

    // A folder that cannot be stored is used, and what was stored stays.
    const auto stored = m_store.data(key());
    m_service->setCopyFolder(fileUrl("/\xFF"));
    QCOMPARE(m_store.data(key()), stored);
    QCOMPARE(localPath(m_service->copyFolder()), std::optional(QByteArray("/\xFF")));
}

void DropActionsServiceTest::outcomes()
{
    const QString full = text("b: No space left on device");
    const struct {
        DropActionID action;
        QStringList failures;
        const char *expected;
        const char *said;
    } cases[] = {
        {shelf,
         {},
         "mkdir /s, copy /x/a /x/b to /s, open /s",
         "Saved 2 file(s) to Shelf, Shelf — done"},
        {shelf,
         {text("s: Read-only file system"), full},
         "mkdir /s, copy /x/a /x/b to /s",
         "Shelf failed: b: No space left on device"},
        {airDrop, {}, "send /x/a /x/b", "AirDrop — done"},
        {copy, {}, "copy /x/a /x/b to /c", "Copied 2 file(s), Copy — done"},
        {copy, {full}, "copy /x/a /x/b to /c", "Copy failed: b: No space left on device"},
        {DropActionID::move, {}, "move /x/a /x/b to /m", "Moved 2 file(s), Move — done"},
        {trash, {}, "trash /x/a /x/b", "Moved 2 file(s) to Trash, Trash — done"},
        {music, {}, "who is com.apple.Music, open /x/a, open /x/b", "Music — done"},
        {eject, {}, "eject /x/a, eject /x/b", "Nothing to eject, Eject — done"},
        {openWith, {}, "who opens /x/a, open /x/a", "Open With — done"},
    };
    for (const auto &[action, failures, expected, said] : cases) {
        init();
        m_service->setShelfFolder(fileUrl("/s"));
        m_service->setCopyFolder(fileUrl("/c"));
        m_service->setMoveFolder(fileUrl("/m"));
        m_fake->failures = failures;
        QCOMPARE(perform(action, files({"/x/a", "/x/b"})), text(said));
        QCOMPARE(calls(), text(expected));
    }
}

void DropActionsServiceTest::statusComesInOneTurn()
{
    m_fake->player = Application{text("p.desktop"), text("Player"), {}};
    QCOMPARE(perform(music, files({"/a", "/b"})), text("Added 2 file(s) to Music, Music — done"));
    QCOMPARE(m_fake->calls.last(), text("open /a /b in p.desktop"));
    m_fake->ejections = {false, true, true};
    QCOMPARE(perform(eject, files({"/a", "/b", "/c"})), text("Ejected 2 volume(s), Eject — done"));
    QVERIFY(perform(trash, {}).isEmpty());
    QCOMPARE(m_service->lastStatus(), text("Eject — done")); // until the next drag
}

void DropActionsServiceTest::zipNamesItsArchive()
{
    const auto archive = [this](std::initializer_list<const char *> paths) {
        const QString said = perform(zip, files(paths));
        return m_fake->calls.mid(1).join(text(", ")) + text("; ") + said;
    };
    QCOMPARE(archive({"/d/a.tar.gz"}), text("place /d/HIDDEN as /d/a.tar.zip; "
                                            "Zipped to a.tar.zip, Zip — done"));
    QCOMPARE(m_fake->calls.first(), text("/usr/bin/zip -ry /d/HIDDEN -@ < /d/a.tar.gz\n"));
    m_fake->takenPath = "/d/Archive.zip";
    QCOMPARE(archive({"/d/a.txt", "/e/b"}), text("place /d/HIDDEN as /d/Archive.zip; "
                                                 "Zipped to Archive 1.zip, Zip — done"));
    m_fake->processes = {{text("zip: No such file or directory"), 0}};
    QCOMPARE(archive({"/d/a"}),
             text("discard /d/HIDDEN; Zip failed: zip: No such file or directory"));
    m_fake->failures = {text("a.zip: Permission denied")};
    QCOMPARE(archive({"/d/a"}), text("place /d/HIDDEN as /d/a.zip, discard /d/HIDDEN; "
                                     "Zip failed: a.zip: Permission denied"));
}

void DropActionsServiceTest::unzipSkipsTheRest()
{
    QCOMPARE(perform(unzip, files({"/d/A.ZIP", "/d/b.txt", "/d/zip", "/d/c.zip"})),
             text("Extracted 4 archive(s), Unzip — done"));
    QCOMPARE(calls(), text("mkdir /d/A, /usr/bin/unzip -o /d/A.ZIP -d /d/A, mkdir /d/c, "
                           "/usr/bin/unzip -o /d/c.zip -d /d/c"));
    m_fake->processes = {{{}, 9}};
    QCOMPARE(perform(unzip, files({"/d/a.zip", "/d/b.zip"})),
             text("Unzip failed: Process exited 9"));
    QCOMPARE(m_fake->calls.size(), 2); // the second is not tried
}

void DropActionsServiceTest::convertingSkipsTheRest()
{
    using enum ImageOutcome::Result;
    m_service->setImageConvertFormat(text("Jpeg"));
    m_fake->imageOutcomes = {{Written, {}}, {Skipped, {}}};
    QCOMPARE(perform(imageConvert, files({"/d/a.png", "/d/a.pdf", "/d/B.HEIC", "/d/png"})),
             text("Converted 1 image(s) to .Jpeg, Convert — done"));
    QCOMPARE(calls(), text("convert /d/a.png to /d/a.jpg as jpeg 0.9, "
                           "convert /d/B.HEIC to /d/B.jpg as jpeg 0.9"));
    m_service->setImageConvertFormat(text("webp"));
    QCOMPARE(perform(imageConvert, files({"/d/a.tif"})),
             text("Converted 1 image(s) to .webp, Convert — done"));
    QCOMPARE(calls(), text("convert /d/a.tif to /d/a.png as png -1"));
    m_fake->imageOutcomes = {{Written, {}}, {Failed, text("b.png: Permission denied")}};
    QCOMPARE(perform(imageConvert, files({"/d/a.gif", "/d/b.gif", "/d/c.gif"})),
             text("Convert failed: b.png: Permission denied"));
    QCOMPARE(m_fake->calls.size(), 2);
}

void DropActionsServiceTest::openWithWaitsForTheMenu()
{
    for (int i = 0; i < 11; ++i) {
        m_fake->applications << Application{text("%1.desktop").arg(i), text("App %1").arg(i), {}};
    }
    QVERIFY(perform(openWith, files({"/a.txt", "/b.png"})).isEmpty());
    OpenWithMenu *const menu = m_service->openWithMenu();
    QVERIFY(menu->isOpen());
    QCOMPARE(menu->titles().size(), 10);
    QCOMPARE(menu->titles().first(), text("App 0"));
    menu->openWithApp(3);
    QCOMPARE(calls(), text("who opens /a.txt, open /a.txt /b.png in 3.desktop"));
    QCOMPARE(m_service->lastStatus(), text("Open With — done"));
    QVERIFY(!menu->isOpen() && menu->titles().isEmpty());
    menu->openWithApp(3); // too late
    QCOMPARE(m_fake->calls.size(), 2);

    // A second one takes the place of the first, which is then done; none is chosen in it.
    perform(openWith, files({"/first"}));
    QCOMPARE(perform(openWith, files({"/second"})), text("Open With — done"));
    menu->openWithApp(-1);
    menu->dismiss();
    QCOMPARE(calls(), text("who opens /second"));

    // Nobody waits for a menu that nobody shows.
    menu->disconnect(menu);
    QCOMPARE(perform(openWith, files({"/a.txt"})), text("Open With — done"));
    QVERIFY(!menu->isOpen());
}

void DropActionsServiceTest::theServiceGoesFirst()
{
    m_service->execute(unzip, files({"/a.zip", "/b.zip"}));
    m_service->execute(shelf, files({"/a"}));
    QCoreApplication::sendPostedEvents();
    m_service.reset();
    m_fake->calls.clear();
    m_fake->settle();
    QVERIFY(m_fake->calls.isEmpty());
}

QTEST_GUILESS_MAIN(DropActionsServiceTest)
#include "DropActionsServiceTest.moc"
