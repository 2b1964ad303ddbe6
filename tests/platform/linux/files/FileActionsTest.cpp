#include "FileSamples.h"
#include "platform/LocalPath.h"
#include "platform/linux/files/FileItems.h"
#include "platform/linux/files/LinuxFileActions.h"

#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>

using namespace velmora;

namespace
{

constexpr auto onlyOneDisk = "There is only one file system to write to";

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

void setTime(const QByteArray &path, time_t seconds, long nanoseconds)
{
    const timespec times[] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
    utimensat(AT_FDCWD, path.constData(), times, AT_SYMLINK_NOFOLLOW);
}

/// A folder with one of each kind of thing.
void makeTree(const QByteArray &root)
{
    for (const char *folder : {"", "/empty", "/read only", "/read only/deeper"}) {
        mkdir((root + folder).constData(), 0755);
    }
    writeFile(root + "/read only/deeper/file", "x");
    writeFile(root + "/nothing", "");
    writeFile(root + "/program", QByteArray(3'000'000, 'p')); // more than is copied in one go
    writeFile(root + "/-rf *?[a]\n'\"\\", "odd");
    writeFile(root + "/\xFF\xC3(", "no text");
    writeFile(root + '/' + QByteArray(255, 'n'), "long");
    writeFile(root + "/two names", "linked");
    link((root + "/two names").constData(), (root + "/read only/other name").constData());
    symlink("/no/such/file", (root + "/dangling").constData());
    symlink("../..", (root + "/read only/up").constData());
    mkfifo((root + "/pipe").constData(), 0620);
    for (const char *tagged : {"/program", "/empty"}) {
        setxattr((root + tagged).constData(), "user.velmora", "tag", 3, 0);
    }
    chmod((root + "/program").constData(), 0751);
    chmod((root + "/two names").constData(), 0400);
    setTime(root + "/program", 1'000'000'000, 123'456'789);
    setTime(root + "/dangling", 1'000'000'001, 5);
    setTime(root + "/read only/deeper", -5, 0); // before 1970
    chmod((root + "/read only").constData(), 0555);
}

/// What a copy has to keep, a line for each entry of a tree: name, kind, permissions, owner, time,
/// number of names, what a link leads to; then the contents.
QByteArray describe(const QByteArray &path)
{
    QProcess shell;
    shell.start(text("sh"), {text("-c"),
                             text("find \"$0\" -printf '%P %y %m %U %T@ %n %l\\n' | sort\n"
                                  "find \"$0\" -type f -exec md5sum {} + | sed \"s,$0,,\" | sort"),
                             QFile::decodeName(path)});
    shell.waitForFinished();
    return shell.readAll();
}

} // namespace

// In place of those of the C library, also for the libraries.

extern "C" int close(int fd)
{
    passMoment();
    const bool isFile = lseek(fd, 0, SEEK_CUR) >= 0; // a pipe has no place
    const bool fails = closingFails && isFile && (fcntl(fd, F_GETFL) & O_ACCMODE) == O_WRONLY;
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

    void everythingIsKept();
    void namesThatAreTaken();
    void failures();
    void permissions();
    void fullDisk();
    void whatIsNotCopiedIsNotRemoved();
    void deepTrees();
    void goingAwayInTheMiddle();
    void killedAtAnyMoment();
    void foldersAndPlaces();

private:
    using Error = std::optional<QString>;
    enum class Action { Copy, Move };

    /// The error, empty for none.
    QString perform(Action action, const QList<QUrl> &items, const QByteArray &folder);
    QString perform(Action action, const QByteArray &item, const QByteArray &folder)
    {
        return perform(action, urls({item}), folder);
    }
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

void FileActionsTest::everythingIsKept()
{
    makeTree(path("tree"));
    const QByteArray before = describe(path("tree"));
    QCOMPARE(perform(Action::Copy, path("tree"), path("to")), QString());
    QCOMPARE(describe(path("to/tree")), before);
    QCOMPARE(describe(path("tree")), before);
    for (const char *tagged : {"to/tree/program", "to/tree/empty"}) {
        char value[8] = {};
        QCOMPARE(lgetxattr(path(tagged).constData(), "user.velmora", value, sizeof value), 3);
    }
    // Single items of each kind, a folder by a name with a slash.
    for (const QByteArray name : {"dangling", "pipe", "program", "\xFF\xC3(", "empty/"}) {
        QCOMPARE(perform(Action::Copy, path("tree/" + name), path("to")), QString());
        QCOMPARE(describe(path("to/" + name)), describe(path("tree/" + name)));
    }

    writeFile(path("single"));
    for (const QByteArray &target : {path("to/empty"), m_elsewhere}) {
        if (target.isEmpty()) {
            QSKIP(onlyOneDisk);
        }
        QCOMPARE(perform(Action::Move, urls({path("tree"), path("single")}), target), QString());
        QCOMPARE(describe(target + "/tree"), before);
        QCOMPARE(readFile(target + "/single"), QByteArray("content"));
        QCOMPARE(entries(m_root), QList<QByteArray>{"to"});
        QCOMPARE(entries(target).size(), 2);
        QCOMPARE(perform(Action::Move, urls({target + "/tree", target + "/single"}), m_root),
                 QString());
    }
}

void FileActionsTest::namesThatAreTaken()
{
    writeFile(path("a"), "1");
    symlink("nowhere", path("to/a").constData()); // takes the name as well
    mkdir(path("to/a 1").constData(), 0755);
    QCOMPARE(perform(Action::Copy, urls({path("a"), path("a")}), path("to")), QString());
    writeFile(path("a"), "2");
    QCOMPARE(perform(Action::Move, path("a"), path("to")), QString());
    QCOMPARE(entries(path("to")), (QList<QByteArray>{"a", "a 1", "a 2", "a 3", "a 4"}));
    QCOMPARE(readFile(path("to/a 3")), QByteArray("1"));
    QCOMPARE(readFile(path("to/a 4")), QByteArray("2"));
    QVERIFY(entries(path("to/a 1")).isEmpty());
    // Where it is already, its own name is taken.
    QCOMPARE(perform(Action::Move, path("to/a 4"), path("to")), QString());
    QVERIFY(isThere(path("to/a 4 1")));
}

void FileActionsTest::failures()
{
    const QByteArray longName(255, 'l');
    const struct {
        QByteArray item, folder;
        const char *error;
    } cases[] = {
        {"gone\n\xFF", "to", "gone\uFFFD\uFFFD: No such file or directory"},
        {"gone/file", "to", "file: No such file or directory"},
        {"first", "gone", "gone: No such file or directory"},
        {"first", "file", "file: Not a directory"},
        {"tree", "tree", "tree: A folder cannot go into itself"},
        {"tree", "tree/read only/deeper", "tree: A folder cannot go into itself"},
        {longName, "to", ": File name too long"}, // it has no room for a number
        {"tree/..", "to", "..: Invalid argument"},
    };
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
    for (const auto &[item, folder, error] : cases) {
        for (const Action action : {Action::Copy, Action::Move}) {
            const QString result = perform(action, urls({path(item), path("first")}), path(folder));
            QVERIFY2(result.endsWith(text(error)), qPrintable(result));
            QCOMPARE(look(), before); // the second is not tried, nothing is left behind
        }
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
    chmod(path("tree/program").constData(), 04755);
    const bool isForeign = geteuid() == 0;
    // Without root's rights permissions mean something.
    QVERIFY(!isForeign || (setegid(65534) == 0 && seteuid(65534) == 0));
    const auto restore =
        qScopeGuard([&] { QVERIFY(!isForeign || (seteuid(0) == 0 && setegid(0) == 0)); });
    // Nobody else's rights are taken over.
    QCOMPARE(perform(Action::Copy, path("tree/program"), path("to")), QString());
    struct stat info = {};
    QCOMPARE(lstat(path("to/program").constData(), &info), 0);
    QCOMPARE(info.st_mode & 07777, isForeign ? 0755U : 04755U);
    unlink(path("to/program").constData());

    QCOMPARE(perform(Action::Copy, path("tree"), path("to")), text("secret: Permission denied"));
    QCOMPARE(perform(Action::Copy, path("to"), path("locked")), text("to: Permission denied"));
    QCOMPARE(perform(Action::Move, path("locked/file"), path("to")),
             text("file: Permission denied"));
    if (!m_elsewhere.isEmpty()) {
        QCOMPARE(perform(Action::Move, path("locked/file"), "/dev/shm"),
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

void FileActionsTest::whatIsNotCopiedIsNotRemoved()
{
    if (m_elsewhere.isEmpty()) {
        QSKIP(onlyOneDisk);
    }
    makeTree(path("tree"));
    const auto before = describe(path("tree"));
    closingFails = true;
    QString error = perform(Action::Move, path("tree"), m_elsewhere);
    closingFails = false;
    QVERIFY2(error.endsWith(text(": Disk quota exceeded")), qPrintable(error));
    QCOMPARE(describe(path("tree")), before);
    QVERIFY(entries(m_elsewhere).isEmpty());

    // What changes between the copy, whose name is the second to be asked for, and the removal.
    const auto moveWith = [this](const QByteArray &item, std::function<void()> change) {
        namingsLeft = 2;
        atLastNaming = std::move(change);
        return perform(Action::Move, path(item), m_elsewhere);
    };
    mkdir(path("folder").constData(), 0755);
    writeFile(path("folder/file"));
    QCOMPARE(moveWith("folder", [this] { writeFile(path("folder/new")); }),
             text("folder: Directory not empty"));
    QCOMPARE(entries(path("folder")), QList<QByteArray>{"new"});
    QCOMPARE(entries(m_elsewhere + "/folder"), QList<QByteArray>{"file"});

    writeFile(path("a"), "before");
    error = moveWith("a", [this] {
        writeFile(path("a"), "after!");
        setTime(path("a"), 1'000'000'000, 0);
    });
    QCOMPARE(error, text("a: It has changed while it was moved"));
    QCOMPARE(readFile(path("a")), QByteArray("after!"));
}

void FileActionsTest::deepTrees()
{
    // Deeper than this process may have open files.
    rlimit usual = {};
    getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit few{100, usual.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    QByteArray folder = path("deep");
    for (int i = 0; i < 120; ++i) {
        mkdir(folder.constData(), 0755);
        folder += "/d";
    }
    writeFile(folder, "bottom");
    QCOMPARE(perform(Action::Copy, path("deep"), path("to")), QString());
    setrlimit(RLIMIT_NOFILE, &usual);
    QCOMPARE(readFile(path("to") + folder.mid(m_root.size())), QByteArray("bottom"));
}

void FileActionsTest::goingAwayInTheMiddle()
{
    const QByteArray target = m_elsewhere.isEmpty() ? path("to") : m_elsewhere;
    writeFile(path("large"), QByteArray(100 * 1024 * 1024, 'x'));
    bool isAnswered = false;
    {
        LinuxFileActions actions;
        actions.moveItems(urls({path("large")}), fileUrl(target), numbered,
                          [&isAnswered](const auto & /*error*/) { isAnswered = true; });
    }
    QCoreApplication::processEvents();
    QVERIFY(!isAnswered);
    // All of it is in one of the two places, whatever came first, and nothing half in between.
    QCOMPARE(int{isThere(path("large"))} + int(entries(target).size()), 1);
}

void FileActionsTest::killedAtAnyMoment()
{
    if (m_elsewhere.isEmpty()) {
        QSKIP(onlyOneDisk);
    }
    int moment = 0;
    int status = 0;
    do {
        discard(path("tree"));
        discard(m_elsewhere + "/tree");
        mkdir(path("tree").constData(), 0755);
        mkdir(path("tree/below").constData(), 0755);
        const auto name = [](int i) {
            return (i % 2 == 0 ? "tree/" : "tree/below/") + QByteArray::number(i);
        };
        for (int i = 0; i < 20; ++i) {
            writeFile(path(name(i)), name(i).repeated(100));
        }
        const pid_t child = fork();
        if (child == 0) {
            momentsLeft = moment + 1;
            moveItem(path("tree"), m_elsewhere, numbered, nullptr);
            _exit(0);
        }
        QCOMPARE(waitpid(child, &status, 0), child);
        for (int i = 0; i < 20; ++i) {
            const QByteArray content = name(i).repeated(100);
            const QByteArray copy = m_elsewhere + '/' + name(i);
            QVERIFY2(!isThere(m_elsewhere + "/tree") || readFile(copy) == content, copy);
            QVERIFY2(isThere(copy) || readFile(path(name(i))) == content, copy);
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
