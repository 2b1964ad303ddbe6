#include "FileSamples.h"
#include "platform/LocalPath.h"
#include "platform/linux/files/FileItems.h"
#include "platform/linux/files/LinuxFileActions.h"
#include "platform/linux/files/PartFiles.h"
#include "platform/linux/files/TreeCopy.h"

#include <QEventLoop>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/mount.h>

using namespace velmora;

namespace
{

constexpr const char *copyAndDie = "--copy-and-die";

QByteArray numbered(const QByteArray &name, int attempt)
{
    return attempt == 0 ? name : name + ' ' + QByteArray::number(attempt);
}

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QList<QUrl> urls(const QList<QByteArray> &paths)
{
    QList<QUrl> result;
    for (const QByteArray &path : paths) {
        result << fileUrl(path);
    }
    return result;
}

} // namespace

class FileActionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void copyKeepsEverything();
    void moveKeepsEverything_data();
    void moveKeepsEverything();
    void holesStay();
    void everyByteOfALargeFileArrives();
    void sourcesThatGrowOrTellNoSize();
    void namesThatAreTaken();
    void failures_data();
    void failures();
    void permissions();
    void fullDisk();
    void whatChangedIsNotRemoved();
    void thePathsOfDeepTrees();
    void goingAwayInTheMiddle();
    void remainsOfAKilledCopy();
    void whatIsNoRemainsStays();
    void folders();

private:
    enum class Action { Copy, Move };

    /// The error, empty for none.
    QString perform(Action action, const QList<QUrl> &items, const QByteArray &folder);
    [[nodiscard]] QByteArray path(const QByteArray &name) const { return m_root + '/' + name; }

    std::unique_ptr<QTemporaryDir> m_folder;
    QByteArray m_root;
    QByteArray m_elsewhere;
    LinuxFileActions m_actions;
};

void FileActionsTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_root = QFile::encodeName(m_folder->path());
    chmod(m_root.constData(), 0777);
    mkdir(path("to").constData(), 0777);
    chmod(path("to").constData(), 0777);
    m_elsewhere = folderElsewhere(m_root);
}

void FileActionsTest::cleanup()
{
    for (const QByteArray &folder : {m_root, m_elsewhere}) {
        if (!folder.isEmpty()) {
            discard(AT_FDCWD, folder);
            QVERIFY(!isThere(folder));
        }
    }
}

QString FileActionsTest::perform(Action action, const QList<QUrl> &items, const QByteArray &folder)
{
    QEventLoop loop;
    std::optional<QString> error;
    bool isDone = false;
    const auto done = [&](const std::optional<QString> &result) {
        error = result;
        isDone = true;
        loop.quit();
    };
    if (action == Action::Copy) {
        m_actions.copyItems(items, fileUrl(folder), numbered, done);
    } else {
        m_actions.moveItems(items, fileUrl(folder), numbered, done);
    }
    if (isDone) {
        return text("answered inside the call");
    }
    loop.exec();
    return error.value_or(QString());
}

void FileActionsTest::copyKeepsEverything()
{
    makeTree(path("tree"));
    const auto before = describe(path("tree"));
    QCOMPARE(perform(Action::Copy, urls({path("tree")}), path("to")), QString());
    QCOMPARE(describe(path("to/tree")), before);
    QCOMPARE(describe(path("tree")), before);
    // Single items of each kind, a folder by a name with a slash.
    QCOMPARE(perform(Action::Copy,
                     urls({path("tree/dangling"), path("tree/pipe"), path("tree/program"),
                           path("tree/\xFF\xC3("), path("tree/empty") + '/'}),
                     path("to")),
             QString());
    for (const char *name : {"dangling", "pipe", "program", "\xFF\xC3(", "empty"}) {
        QCOMPARE(describe(path("to/") + name), describe(path("tree/") + name));
    }
    QCOMPARE(entries(path("to")).size(), 6);
}

void FileActionsTest::moveKeepsEverything_data()
{
    QTest::addColumn<bool>("isElsewhere");
    QTest::newRow("by renaming") << false;
    QTest::newRow("to another file system") << true;
}

void FileActionsTest::moveKeepsEverything()
{
    QFETCH(const bool, isElsewhere);
    if (isElsewhere && m_elsewhere.isEmpty()) {
        QSKIP("There is only one file system to write to");
    }
    const QByteArray target = isElsewhere ? m_elsewhere : path("to");
    makeTree(path("tree"));
    if (isElsewhere) { // memory has no attributes of users
        removexattr(path("tree/program").constData(), "user.velmora");
        removexattr(path("tree/empty").constData(), "user.velmora");
    }
    writeFile(path("single"));
    const auto before = describe(path("tree"));
    QCOMPARE(perform(Action::Move, urls({path("tree"), path("single")}), target), QString());
    QCOMPARE(describe(target + "/tree"), before);
    QCOMPARE(readFile(target + "/single"), QByteArray("content"));
    QCOMPARE(entries(m_root), QList<QByteArray>{"to"});
    QCOMPARE(entries(target).size(), 2);
}

void FileActionsTest::holesStay()
{
    constexpr off_t size = 64 * 1024 * 1024;
    for (const QByteArray &target : {path("to"), m_elsewhere}) {
        if (target.isEmpty()) {
            continue;
        }
        const QByteArray name = "holes";
        const int fd = open(path(name).constData(), O_RDWR | O_CREAT | O_TRUNC, 0644);
        QCOMPARE(pwrite(fd, "middle", 6, size / 2), ssize_t{6});
        QCOMPARE(ftruncate(fd, size), 0);
        close(fd);
        QCOMPARE(perform(Action::Copy, urls({path(name)}), target), QString());
        struct stat info = {};
        QCOMPARE(lstat((target + '/' + name).constData(), &info), 0);
        QCOMPARE(info.st_size, size);
        QVERIFY2(info.st_blocks < 1024, "the holes have been filled");
        const QByteArray copy = readFile(target + '/' + name);
        QVERIFY(copy == readFile(path(name)));
    }
}

void FileActionsTest::everyByteOfALargeFileArrives()
{
    QByteArray content(40 * 1024 * 1024 + 17, Qt::Uninitialized);
    for (qsizetype i = 0; i < content.size(); ++i) {
        content[i] = static_cast<char>(i * 7 + i / 251);
    }
    writeFile(path("large"), content);
    for (const QByteArray &target : {path("to"), m_elsewhere}) {
        if (!target.isEmpty()) {
            QCOMPARE(perform(Action::Copy, urls({path("large")}), target), QString());
            QVERIFY(readFile(target + "/large") == content);
        }
    }
}

void FileActionsTest::sourcesThatGrowOrTellNoSize()
{
    // The kernel says 0 of what it makes up while it is read.
    QCOMPARE(perform(Action::Copy, urls({"/proc/version"}), path("to")), QString());
    QCOMPARE(readFile(path("to/version")), readFile("/proc/version"));
}

void FileActionsTest::namesThatAreTaken()
{
    writeFile(path("a"), "1");
    symlink("nowhere", path("to/a").constData()); // takes the name as well
    mkdir(path("to/a 1").constData(), 0755);
    QCOMPARE(perform(Action::Copy, urls({path("a"), path("a")}), path("to")), QString());
    writeFile(path("a"), "2");
    QCOMPARE(perform(Action::Move, urls({path("a")}), path("to")), QString());
    QCOMPARE(entries(path("to")), (QList<QByteArray>{"a", "a 1", "a 2", "a 3", "a 4"}));
    QCOMPARE(readFile(path("to/a 3")), QByteArray("1"));
    QCOMPARE(readFile(path("to/a 4")), QByteArray("2"));
    QVERIFY(entries(path("to/a 1")).isEmpty());
    // Where it is already, its own name is taken.
    QCOMPARE(perform(Action::Move, urls({path("to/a 4")}), path("to")), QString());
    QVERIFY(isThere(path("to/a 4 1")));
}

void FileActionsTest::failures_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<QByteArray>("folder");
    QTest::addColumn<QString>("error");
    const auto row = [](const char *name, const char *item, const char *folder, const char *error) {
        QTest::newRow(name) << QByteArray(item) << QByteArray(folder) << text(error);
    };
    row("vanished", "gone\n\xFF", "to", "gone\uFFFD\uFFFD: No such file or directory");
    row("folder of it vanished", "gone/file", "to", "gone: No such file or directory");
    row("no target", "first", "gone", "gone: No such file or directory");
    row("target is a file", "first", "file", "file: Not a directory");
    row("into itself", "tree", "tree", "tree: A folder cannot go into itself");
    row("deep into itself", "tree", "tree/read only/deeper",
        "tree: A folder cannot go into itself");
    row("the name has no room for a number", "long", "to", ": File name too long");
    row("the folder above", "tree/..", "to", "..: Invalid argument");
}

void FileActionsTest::failures()
{
    QFETCH(QByteArray, item);
    QFETCH(const QByteArray, folder);
    QFETCH(const QString, error);
    const QByteArray longName(255, 'l');
    item = item == "long" ? longName : item;
    for (const QByteArray &name :
         {QByteArray("file"), QByteArray("first"), longName, "to/" + longName}) {
        writeFile(path(name));
    }
    makeTree(path("tree"));
    const auto look = [this] {
        setTime(path("to"), 0, 0); // coming and going leaves a trace in the folder's own time
        return describe(m_root);
    };
    const auto before = look();
    for (const Action action : {Action::Copy, Action::Move}) {
        QString result = perform(action, urls({path(item), path("first")}), path(folder));
        if (action == Action::Move && error.contains(text("itself"))) {
            result.replace(text("Invalid argument"), text("A folder cannot go into itself"));
        }
        QVERIFY2(result.endsWith(error), qPrintable(result));
        QCOMPARE(look(), before); // the second is not tried, nothing is left behind
    }
    QVERIFY(perform(Action::Copy, {QUrl(text("http://host/a"))}, path("to"))
                .endsWith(text("Not a file of this computer")));
}

void FileActionsTest::permissions()
{
    makeTree(path("tree"));
    writeFile(path("tree/secret"));
    chmod(path("tree/secret").constData(), 0);
    mkdir(path("locked").constData(), 0755);
    writeFile(path("locked/file"));
    chmod(path("locked").constData(), 0555);
    const Unprivileged unprivileged;
    QCOMPARE(perform(Action::Copy, urls({path("tree")}), path("to")),
             text("secret: Permission denied"));
    QCOMPARE(perform(Action::Copy, urls({path("to")}), path("locked")),
             text("to: Permission denied"));
    QCOMPARE(perform(Action::Move, urls({path("locked/file")}), path("to")),
             text("file: Permission denied"));
    if (!m_elsewhere.isEmpty()) {
        QCOMPARE(perform(Action::Move, urls({path("locked/file")}), "/dev/shm"),
                 text("file: Permission denied"));
        QVERIFY(!isThere("/dev/shm/file")); // known before anything is copied
    }
    QCOMPARE(entries(path("to")), QList<QByteArray>());
    QCOMPARE(entries(path("locked")), QList<QByteArray>{"file"});
}

void FileActionsTest::fullDisk()
{
    mkdir(path("small").constData(), 0755);
    if (mount("velmora-test", path("small").constData(), "tmpfs", 0, "size=1m") != 0) {
        QSKIP("Only root can make a small disk");
    }
    mkdir(path("tree").constData(), 0755);
    writeFile(path("tree/1"), QByteArray(600'000, 'x'));
    writeFile(path("tree/2"), QByteArray(600'000, 'x'));
    writeFile(path("fits"));
    const auto before = describe(path("tree"));
    for (const Action action : {Action::Copy, Action::Move}) {
        const QString error = perform(action, urls({path("fits"), path("tree")}), path("small"));
        QVERIFY2(error.endsWith(text(": No space left on device")), qPrintable(error));
        QCOMPARE(describe(path("tree")), before);
        if (action == Action::Copy) {
            QCOMPARE(entries(path("small")), QList<QByteArray>{"fits"});
        }
    }
    QCOMPARE(entries(path("small")), (QList<QByteArray>{"fits", "fits 1"}));
    QCOMPARE(umount2(path("small").constData(), MNT_DETACH), 0);
}

void FileActionsTest::whatChangedIsNotRemoved()
{
    const CancelFlag never = false;
    FileContent content(never);
    const auto copied = [&](const QByteArray &name) {
        TreeCopy tree({AT_FDCWD, path(name), path(name)},
                      {AT_FDCWD, path("to/") + name, path("to/") + name}, content);
        tree.copy();
        return tree;
    };
    mkdir(path("tree").constData(), 0755);
    writeFile(path("tree/file"));
    TreeCopy withNewFile = copied("tree");
    writeFile(path("tree/new"));
    QVERIFY_EXCEPTION_THROWN(withNewFile.removeSource(), FileFailure);
    QCOMPARE(entries(path("tree")), QList<QByteArray>{"new"});

    writeFile(path("a"), "before");
    TreeCopy withOther = copied("a");
    writeFile(path("a"), "after!");
    setTime(path("a"), 1'000'000'000, 0);
    QVERIFY_EXCEPTION_THROWN(withOther.removeSource(), FileFailure);
    QCOMPARE(readFile(path("a")), QByteArray("after!"));
}

void FileActionsTest::thePathsOfDeepTrees()
{
    // Deeper than a process may have open files, but within what a path may be long.
    QByteArray folder = path("deep");
    for (int i = 0; i < 1500; ++i) {
        mkdir(folder.constData(), 0755);
        folder += "/d";
    }
    writeFile(folder, "bottom");
    QCOMPARE(perform(Action::Copy, urls({path("deep")}), path("to")), QString());
    QCOMPARE(readFile(path("to") + folder.mid(m_root.size())), QByteArray("bottom"));
}

void FileActionsTest::goingAwayInTheMiddle()
{
    writeFile(path("large"), QByteArray(100 * 1024 * 1024, 'x'));
    bool isAnswered = false;
    {
        LinuxFileActions actions;
        actions.moveItems(urls({path("large")}),
                          fileUrl(m_elsewhere.isEmpty() ? path("to") : m_elsewhere), numbered,
                          [&isAnswered](const auto & /*error*/) { isAnswered = true; });
    }
    QCoreApplication::processEvents();
    QVERIFY(!isAnswered);
    // All of it is in one of the two places, whatever came first, and nothing half in between.
    const QByteArray target = m_elsewhere.isEmpty() ? path("to") : m_elsewhere;
    QCOMPARE(int{isThere(path("large"))} + int(entries(target).size()), 1);
}

void FileActionsTest::remainsOfAKilledCopy()
{
    makeTree(path("tree"));
    writeFile(path("file"));
    for (const char *item : {"tree", "file"}) {
        QProcess other;
        other.start(
            QCoreApplication::applicationFilePath(),
            {text(copyAndDie), QFile::decodeName(path(item)), QFile::decodeName(path("to"))});
        QVERIFY(other.waitForFinished());
        QCOMPARE(other.exitStatus(), QProcess::CrashExit);
    }
    QCOMPARE(entries(path("to")).size(), 2);
    QVERIFY(entries(path("to")).front().startsWith(".velmora-"));

    QCOMPARE(perform(Action::Copy, urls({path("file")}), path("to")), QString());
    QCOMPARE(entries(path("to")), QList<QByteArray>{"file"});
}

void FileActionsTest::whatIsNoRemainsStays()
{
    QProcess other;
    other.start(QStringLiteral("true"), QStringList());
    const qint64 ended = other.processId();
    QVERIFY(other.waitForFinished());
    const auto nameBy = [](const std::function<void(PartOwner &)> &change) {
        PartOwner owner = PartOwner::self();
        change(owner);
        return temporaryName(owner);
    };
    const QByteArray gone = nameBy([ended](PartOwner &owner) { owner.pid = ended; });
    const QByteArray successor = nameBy([](PartOwner &owner) { --owner.start; });
    const QByteArray earlier = nameBy([](PartOwner &owner) { owner.boot = "earlier"; });
    const QList<QByteArray> kept{
        temporaryName(),
        nameBy([](PartOwner &owner) { owner.machine = "another"; }),
        nameBy([ended](PartOwner &owner) {
            owner.machine.clear();
            owner.pid = ended;
        }),
        gone + ".txt",
        "a" + gone,
        QByteArray(gone).replace(".part", "-2.part"),
        ".velmora-.part",
        ".velmora-abcdefg.part",
        ".velmora-----.part",
        ".velmora-notes",
    };
    const auto remaining = [this] {
        const auto names = entries(path("to"));
        return QSet<QByteArray>(names.begin(), names.end());
    };
    for (const QByteArray &name : kept + QList<QByteArray>{gone, successor, earlier}) {
        writeFile(path("to/" + name));
    }
    symlink("file",
            path("to/" + nameBy([ended](PartOwner &owner) { owner.pid = ended; })).constData());

    tidyFolder(path("to"));
    QSet<QByteArray> expected(kept.begin(), kept.end());
    expected << earlier; // as young as it is, it may be of another name space
    QCOMPARE(remaining(), expected);

    const int folder = open(path("to").constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    PartOwner later = PartOwner::self();
    later.bootSeconds = time(nullptr) + 10;
    removeLeftovers(folder, later);
    close(folder);
    expected.remove(earlier);
    QCOMPARE(remaining(), expected);

    if (geteuid() == 0) {
        writeFile(path("to/" + gone));
        const Unprivileged nobody;
        tidyFolder(path("to"));
        expected << gone;
        QCOMPARE(remaining(), expected);
    }
}

void FileActionsTest::folders()
{
    const auto make = [this](const QByteArray &folder) {
        QEventLoop loop;
        QString error;
        m_actions.createFolder(fileUrl(folder), [&](const std::optional<QString> &result) {
            error = result.value_or(QString());
            loop.quit();
        });
        loop.exec();
        return error;
    };
    QCOMPARE(make(path("a/b/\xFF")), QString());
    QVERIFY(isThere(path("a/b/\xFF")));
    QCOMPARE(make(path("a")), QString());
    writeFile(path("file"));
    QCOMPARE(make(path("file")), text("file: File exists"));
    QCOMPARE(make(path("file/below")), text("below: Not a directory"));

    QEventLoop loop;
    QUrl free;
    m_actions.findFreeName(fileUrl(path("file")), numbered, [&](const QUrl &url) {
        free = url;
        loop.quit();
    });
    loop.exec();
    QCOMPARE(localPath(free), std::optional(path("file 1")));
}

/// Started as `copyAndDie ITEM FOLDER`, this program is killed when it has copied all of the item
/// and is about to give the copy its name.
int main(int argc, char *argv[])
{
    if (argc == 4 && text(copyAndDie) == text(argv[1])) {
        const CancelFlag isCancelled = false;
        FileContent content(isCancelled);
        const auto die = [](const QByteArray &name, int) {
            raise(SIGKILL);
            return name;
        };
        copyItem(argv[2], argv[3], die, content);
        return 0;
    }
    const QCoreApplication application(argc, argv);
    FileActionsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "FileActionsTest.moc"
