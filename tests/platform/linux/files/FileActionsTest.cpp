#include "FileSamples.h"
#include "platform/LocalPath.h"
#include "platform/linux/files/FileItems.h"
#include "platform/linux/files/LinuxFileActions.h"
#include "platform/linux/files/TreeCopy.h"

#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <csignal>
#include <functional>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <sys/wait.h>

using namespace velmora;

namespace
{

std::atomic<bool> closingFails = false;     ///< for files that were written, as quotas have it
std::atomic<int> momentsLeft = 0;           ///< until this process is killed; 0 for never
std::atomic<int> namingsLeft = 0;           ///< until the following is done once
std::function<void()> atLastNaming = [] {}; ///< in the thread that asks for a name

void passMoment()
{
    if (momentsLeft > 0 && --momentsLeft == 0) {
        raise(SIGKILL);
    }
}

QByteArray numbered(const QByteArray &name, int attempt)
{
    if (namingsLeft > 0 && --namingsLeft == 0) {
        atLastNaming();
    }
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

// In place of those of the C library, also for the libraries.

extern "C" int close(int fd)
{
    passMoment();
    const bool fails = closingFails && (fcntl(fd, F_GETFL) & O_ACCMODE) == O_WRONLY;
    const long result = syscall(SYS_close, fd);
    errno = fails ? EDQUOT : errno;
    return fails ? -1 : static_cast<int>(result);
}

extern "C" int unlink(const char *path) noexcept
{
    passMoment();
    return static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, path, 0));
}

class FileActionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void copyKeepsEverything();
    void moveKeepsEverything();
    void largeFilesAndHoles();
    void namesThatAreTaken();
    void failures_data();
    void failures();
    void permissions();
    void fullDisk();
    void whatIsNotWrittenIsNotRemoved();
    void whatChangedIsNotRemoved();
    void deepTrees();
    void goingAwayInTheMiddle();
    void killedAtAnyMoment();
    void foldersAndPlaces();

private:
    using Error = std::optional<QString>;
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
            discard(folder);
            QVERIFY(!isThere(folder));
        }
    }
}

QString FileActionsTest::perform(Action action, const QList<QUrl> &items, const QByteArray &folder)
{
    const auto call = action == Action::Copy ? &FileActions::copyItems : &FileActions::moveItems;
    return answerOf<Error>(
               [&](const auto &done) { (m_actions.*call)(items, fileUrl(folder), numbered, done); })
        .value_or(QString());
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

void FileActionsTest::moveKeepsEverything()
{
    for (const QByteArray &target : {path("to"), m_elsewhere}) {
        if (target.isEmpty()) {
            QSKIP("There is only one file system to write to");
        }
        makeTree(path("tree"));
        if (target == m_elsewhere) { // memory has no attributes of users
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
}

void FileActionsTest::largeFilesAndHoles()
{
    constexpr off_t size = 64 * 1024 * 1024;
    QByteArray content;
    for (int i = 0; i < 100'000; ++i) {
        content += QByteArray::number(i);
    }
    content = content.repeated(40); // some 20 MB, more than is copied in one go
    writeFile(path("large"), content);
    const int fd = open(path("large").constData(), O_RDWR);
    QCOMPARE(pwrite(fd, "middle", 6, size / 2), ssize_t{6});
    QCOMPARE(ftruncate(fd, size), 0);
    close(fd);
    content = readFile(path("large"));
    for (const QByteArray &target : {path("to"), m_elsewhere}) {
        if (!target.isEmpty()) {
            QCOMPARE(perform(Action::Copy, urls({path("large")}), target), QString());
            struct stat info = {};
            QCOMPARE(lstat((target + "/large").constData(), &info), 0);
            QVERIFY2(info.st_blocks < 25 * 2048, "the holes have been filled");
            QVERIFY(readFile(target + "/large") == content);
        }
    }
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
    row("folder of it vanished", "gone/file", "to", "file: No such file or directory");
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
        const QString result = perform(action, urls({path(item), path("first")}), path(folder));
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
    const bool isForeign = geteuid() == 0;
    chmod(path("tree/program").constData(), 04755);
    const Unprivileged unprivileged;
    // Nobody else's rights are taken over, and what is read-only keeps its attributes.
    QCOMPARE(perform(Action::Copy, urls({path("tree/program")}), path("to")), QString());
    struct stat info = {};
    QCOMPARE(lstat(path("to/program").constData(), &info), 0);
    QCOMPARE(info.st_mode & 07777, isForeign ? 0755U : 04755U);
    unlink(path("to/program").constData());
    writeFile(path("to/read-only"));
    setxattr(path("to/read-only").constData(), "user.velmora", "tag", 3, 0);
    chmod(path("to/read-only").constData(), 0400);
    QCOMPARE(perform(Action::Copy, urls({path("to/read-only")}), path("to")), QString());
    QCOMPARE(describe(path("to/read-only 1")), describe(path("to/read-only")));
    unlink(path("to/read-only").constData());
    unlink(path("to/read-only 1").constData());

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

void FileActionsTest::whatIsNotWrittenIsNotRemoved()
{
    if (m_elsewhere.isEmpty()) {
        QSKIP("There is only one file system to write to");
    }
    makeTree(path("tree"));
    const auto before = describe(path("tree"));
    closingFails = true;
    const QString error = perform(Action::Move, urls({path("tree")}), m_elsewhere);
    closingFails = false;
    QVERIFY2(error.endsWith(text(": Disk quota exceeded")), qPrintable(error));
    QCOMPARE(describe(path("tree")), before);
    QVERIFY(entries(m_elsewhere).isEmpty());
}

void FileActionsTest::whatChangedIsNotRemoved()
{
    if (m_elsewhere.isEmpty()) {
        QSKIP("There is only one file system to write to");
    }
    // Between the copy, whose name is the second to be asked for, and the removal.
    const auto moveWith = [this](const QByteArray &item, std::function<void()> change) {
        namingsLeft = 2;
        atLastNaming = std::move(change);
        return perform(Action::Move, urls({path(item)}), m_elsewhere);
    };
    mkdir(path("tree").constData(), 0755);
    writeFile(path("tree/file"));
    QCOMPARE(moveWith("tree", [this] { writeFile(path("tree/new")); }),
             text("tree: Directory not empty"));
    QCOMPARE(entries(path("tree")), QList<QByteArray>{"new"});
    QCOMPARE(entries(m_elsewhere + "/tree"), QList<QByteArray>{"file"});

    writeFile(path("a"), "before");
    const QString error = moveWith("a", [this] {
        writeFile(path("a"), "after!");
        setTime(path("a"), 1'000'000'000, 0);
    });
    QCOMPARE(error, text("a: It has changed while it was moved"));
    QCOMPARE(readFile(path("a")), QByteArray("after!"));
}

void FileActionsTest::deepTrees()
{
    // Deeper than a process may have open files, but within what a path may be long.
    QByteArray folder = path("deep");
    for (int i = 0; i < 1100; ++i) {
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

void FileActionsTest::killedAtAnyMoment()
{
    if (m_elsewhere.isEmpty()) {
        QSKIP("There is only one file system to write to");
    }
    int moment = 0;
    int status = 0;
    do {
        discard(path("tree"));
        discard(m_elsewhere + "/tree");
        mkdir(path("tree").constData(), 0755);
        mkdir(path("tree/below").constData(), 0755);
        for (int i = 0; i < 30; ++i) {
            writeFile(path(i % 2 == 0 ? "tree/" : "tree/below/") + QByteArray::number(i),
                      QByteArray::number(i).repeated(100));
        }
        const pid_t child = fork();
        if (child == 0) {
            momentsLeft = moment + 1;
            moveItem(path("tree"), m_elsewhere, numbered, false);
            _exit(0);
        }
        QCOMPARE(waitpid(child, &status, 0), child);
        for (int i = 0; i < 30; ++i) {
            const QByteArray name = (i % 2 == 0 ? "tree/" : "tree/below/") + QByteArray::number(i);
            const QByteArray content = QByteArray::number(i).repeated(100);
            const QByteArray copy = m_elsewhere + '/' + name;
            QVERIFY2(!isThere(m_elsewhere + "/tree") || readFile(copy) == content, copy);
            QVERIFY2(isThere(copy) || readFile(path(name)) == content, name);
        }
        ++moment;
    } while (WIFSIGNALED(status));
    QCOMPARE(status, 0);
    QVERIFY2(moment > 80, "it was to be killed more often");
    QVERIFY(!isThere(path("tree")));
}

void FileActionsTest::foldersAndPlaces()
{
    const auto make = [this](const QByteArray &folder) {
        return answerOf<Error>(
                   [&](const auto &done) { m_actions.createFolder(fileUrl(folder), done); })
            .value_or(QString());
    };
    QCOMPARE(make(path("a/b/\xFF")), QString());
    QVERIFY(isThere(path("a/b/\xFF")));
    QCOMPARE(make(path("a")), QString());
    writeFile(path("file"));
    QCOMPARE(make(path("file")), text("file: Not a directory"));
    QCOMPARE(make(path("file/below")), text("below: Not a directory"));

    using Placed = std::pair<Error, QUrl>;
    const auto place = [this](const QByteArray &item) {
        return answerOf<Placed>([&](const auto &done) {
            m_actions.placeItem(fileUrl(item), fileUrl(path("file")), numbered,
                                [done](const Error &error, const QUrl &url) {
                                    done({error, url});
                                });
        });
    };
    QCOMPARE(place(path("a")), Placed({}, fileUrl(path("file 1"))));
    QVERIFY(isThere(path("file 1/b")) && !isThere(path("a")));
    QCOMPARE(place(path("gone")).first, text("file: No such file or directory"));
    m_actions.discardItem(fileUrl(path("file 1")));
    QTRY_VERIFY(!isThere(path("file 1")));
}

QTEST_GUILESS_MAIN(FileActionsTest)
#include "FileActionsTest.moc"
