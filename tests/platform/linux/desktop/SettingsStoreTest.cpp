#include "platform/linux/desktop/SettingsStore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <csignal>
#include <limits>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace velmora;

namespace
{

constexpr int patience = 20'000; // milliseconds, for a loaded machine

/// A fresh folder with the place of a settings file.
struct Place {
    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("velmora/velmora.conf"));

    void write(const QByteArray &text) const
    {
        QVERIFY(QDir().mkpath(folder.filePath(QStringLiteral("velmora"))));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }

    QByteArray text(const QString &suffix = {}) const
    {
        QFile file(path + suffix);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QStringList entries() const
    {
        return QDir(folder.filePath(QStringLiteral("velmora")))
            .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }
};

const QString key = QStringLiteral("key");

const QList<QString> &difficultStrings()
{
    static const QList<QString> strings = {
        {},
        QStringLiteral("plain"),
        QStringLiteral(" outer space "),
        QStringLiteral("a,b;c=d#e[f]"),
        QStringLiteral("\"quoted\" \\ 'and' \\n"),
        QStringLiteral("line\nline\r\n\ttab"),
        QStringLiteral("@home"),
        QStringLiteral("@@"),
        QStringLiteral("@ByteArray(no)"),
        QStringLiteral("\u00e4\u00f6\u00fc \u65e5\u672c \U0001F600"),
        QStringLiteral("\x01"
                       "1\x1f"
                       "f\x7f"
                       "g"),
        QString(QChar(0)) + QStringLiteral("0"),
        QString(QChar(0xd800)) + u'a',
    };
    return strings;
}

QByteArray allBytes()
{
    QByteArray bytes;
    for (int i = 0; i < 512; ++i)
        bytes.append(static_cast<char>(i / 2 * (i % 2 ? 1 : 7)));
    return bytes;
}

} // namespace

class SettingsStoreTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void absentKeysReadAsNothing();
    void valuesComeBack();
    void numbersRoundTrip_data();
    void numbersRoundTrip();
    void writtenForms();
    void agreesWithQSettings();
    void garbageReadsAsNothing_data();
    void garbageReadsAsNothing();
    void handWrittenValues();
    void writtenOncePerTurn();
    void earlierTurnIsWrittenBeforeTheNext();
    void foreignTextIsKept();
    void editsWhileRunningAreKept();
    void unreadableIsNeverTouched_data();
    void unreadableIsNeverTouched();
    void brokenFileIsKeptAside_data();
    void brokenFileIsKeptAside();
    void brokenFileThatCannotBeKeptIsNotTouched();
    void unwritableStaysInMemory();
    void fullDiskKeepsTheOldText();
    void locksOfOthersDoNotStall();
    void linksAndModesAreKept();
    void survivesBeingKilled();
};

void SettingsStoreTest::absentKeysReadAsNothing()
{
    const Place place;
    {
        const SettingsStore store(place.path);
        QVERIFY(!store.boolean(key) && !store.number(key) && !store.string(key) &&
                !store.data(key));
        QCOMPARE(store.integer(key), 0);
    }
    // Reading alone leaves no trace.
    QVERIFY(!QFile::exists(place.folder.filePath(QStringLiteral("velmora"))));
}

void SettingsStoreTest::valuesComeBack()
{
    const Place place;
    const auto numbered = [](qsizetype i) { return QStringLiteral("group %1/\u00fc/%").arg(i); };
    {
        SettingsStore store(place.path);
        store.setBoolean(QStringLiteral("yes"), true);
        store.setBoolean(QStringLiteral("no"), false);
        store.setInteger(QStringLiteral("least"), std::numeric_limits<qint64>::min());
        store.setData(QStringLiteral("bytes"), allBytes());
        store.setData(QStringLiteral("none"), {});
        store.setString(QStringLiteral("General/k"), QStringLiteral("not the root"));
        for (qsizetype i = 0; i < difficultStrings().size(); ++i)
            store.setString(numbered(i), difficultStrings()[i]);
        QCOMPARE(store.data(QStringLiteral("bytes")), allBytes());
    }
    const SettingsStore store(place.path);
    QCOMPARE(store.boolean(QStringLiteral("yes")), true);
    QCOMPARE(store.boolean(QStringLiteral("no")), false);
    QCOMPARE(store.integer(QStringLiteral("least")), std::numeric_limits<qint64>::min());
    QCOMPARE(store.data(QStringLiteral("bytes")), allBytes());
    QCOMPARE(store.data(QStringLiteral("none")), QByteArray());
    QCOMPARE(store.string(QStringLiteral("General/k")), QStringLiteral("not the root"));
    QVERIFY(!store.string(QStringLiteral("k")));
    for (qsizetype i = 0; i < difficultStrings().size(); ++i)
        QCOMPARE(store.string(numbered(i)), difficultStrings()[i]);
}

void SettingsStoreTest::numbersRoundTrip_data()
{
    QTest::addColumn<double>("number");
    for (const double number : {200.0, 0.3, -0.0, 1e22, 1.0 / 3.0, 5e-324, 1.7976931348623157e308})
        QTest::addRow("%g", number) << number;
}

void SettingsStoreTest::numbersRoundTrip()
{
    QFETCH(double, number);
    const Place place;
    SettingsStore(place.path).setNumber(key, number);
    QCOMPARE(SettingsStore(place.path).number(key).value(), number);
}

void SettingsStoreTest::writtenForms()
{
    const Place place;
    {
        SettingsStore store(place.path);
        store.setNumber(QStringLiteral("a"), 200);
        store.setNumber(QStringLiteral("b"), 0.3);
        store.setNumber(QStringLiteral("c"), 7);
        store.setNumber(QStringLiteral("c"), std::numeric_limits<double>::quiet_NaN());
        store.setNumber(QStringLiteral("c"), std::numeric_limits<double>::infinity());
        store.setBoolean(QStringLiteral("d"), true);
    }
    QCOMPARE(place.text(), QByteArray("[General]\na=200\nb=0.3\nc=7\nd=true\n"));
}

/// The user's other tools know this notation by QSettings.
void SettingsStoreTest::agreesWithQSettings()
{
    const Place ours;
    const Place theirs;
    QVERIFY(QDir().mkpath(theirs.folder.filePath(QStringLiteral("velmora"))));
    {
        SettingsStore store(ours.path);
        QSettings settings(theirs.path, QSettings::IniFormat);
        for (qsizetype i = 0; i < difficultStrings().size(); ++i) {
            const auto name = QStringLiteral("a group/\u00fc/%1").arg(i);
            store.setString(name, difficultStrings()[i]);
            settings.setValue(name, difficultStrings()[i]);
        }
        store.setData(QStringLiteral("bytes"), allBytes());
        settings.setValue(QStringLiteral("bytes"), allBytes());
        store.setInteger(QStringLiteral("General/k"), 5);
        settings.setValue(QStringLiteral("General/k"), 5);
    }
    const SettingsStore store(theirs.path);
    const QSettings settings(ours.path, QSettings::IniFormat);
    QCOMPARE(settings.status(), QSettings::NoError);
    for (qsizetype i = 0; i < difficultStrings().size(); ++i) {
        const auto name = QStringLiteral("a group/\u00fc/%1").arg(i);
        if (difficultStrings()[i].isValidUtf16()) { // theirs loses the others
            QCOMPARE(store.string(name), difficultStrings()[i]);
            QCOMPARE(settings.value(name).toString(), difficultStrings()[i]);
        }
    }
    QCOMPARE(store.data(QStringLiteral("bytes")), allBytes());
    QCOMPARE(settings.value(QStringLiteral("bytes")).toByteArray(), allBytes());
    QCOMPARE(store.integer(QStringLiteral("General/k")), 5);
    QCOMPARE(settings.value(QStringLiteral("General/k")).toInt(), 5);
}

void SettingsStoreTest::garbageReadsAsNothing_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("list") << QByteArray("1, 2");
    QTest::newRow("object") << QByteArray("@Variant(\\0\\0\\0\\x80\\xff\\xff\\xff\\xff)");
    QTest::newRow("point") << QByteArray("@Point(1 2)");
    QTest::newRow("invalid") << QByteArray("@Invalid()");
    QTest::newRow("cut") << QByteArray("@ByteArray(1");
    QTest::newRow("bytes that are none") << QByteArray("@ByteArray(\\x20ac)");
    QTest::newRow("no UTF-8") << QByteArray("\xff\xfe\x31");
}

void SettingsStoreTest::garbageReadsAsNothing()
{
    QFETCH(QByteArray, text);
    const Place place;
    place.write("[General]\nkey=" + text + "\nother=1\n");
    const SettingsStore store(place.path);
    QVERIFY(!store.boolean(key) && !store.number(key) && !store.string(key) && !store.data(key));
    QCOMPARE(store.integer(key), 0);
    QCOMPARE(store.integer(QStringLiteral("other")), 1);
}

void SettingsStoreTest::handWrittenValues()
{
    const Place place;
    place.write("\xef\xbb\xbf"
                "before=1\r\n; comment\n# comment with \" and \\\n[general]\n"
                "nan=nan\ninf=-inf\nhuge=1e999\nword=yes\nempty=\n  spaced  =  a b  ; comment\r\n"
                "TRUE=True\none=1\nzero=0.0\nreal=2.5\nlong=9223372036854775808\n"
                "json={\\\"a\\\": \xc3\xa4}\ncontinued=1\\\n2\noctal=\\101\nend=\"x\" \n"
                "twice=1\ntwice=2\nbytes=@ByteArray(12)");
    const SettingsStore store(place.path);
    const auto k = [](const char *name) { return QString::fromLatin1(name); };
    QCOMPARE(store.integer(k("before")), 1);
    for (const char *const name : {"nan", "inf", "huge", "word", "empty"}) {
        QVERIFY2(!store.number(k(name)), name);
        QVERIFY2(!store.boolean(k(name)), name);
    }
    QCOMPARE(store.string(k("spaced")), k("a b"));
    QCOMPARE(store.boolean(k("TRUE")), true);
    QCOMPARE(store.boolean(k("one")), true);
    QCOMPARE(store.boolean(k("zero")), false);
    QCOMPARE(store.number(k("real")), 2.5);
    QCOMPARE(store.integer(k("real")), 0);
    QCOMPARE(store.integer(k("long")), 0);
    QCOMPARE(store.data(k("json")), QByteArray("{\"a\": \xc3\xa4}"));
    QCOMPARE(store.integer(k("continued")), 12);
    QCOMPARE(store.string(k("octal")), k("A"));
    QCOMPARE(store.string(k("end")), k("x"));
    QCOMPARE(store.integer(k("twice")), 2);
    QVERIFY(!store.string(k("bytes")));
    QCOMPARE(store.data(k("bytes")), QByteArray("12"));
}

void SettingsStoreTest::writtenOncePerTurn()
{
    const Place place;
    SettingsStore store(place.path);
    QTimer::singleShot(0, this, [&] {
        store.setInteger(key, 1);
        store.setInteger(key, 2);
        QCOMPARE(store.integer(key), 2);
        QVERIFY(!QFile::exists(place.path));
    });
    QTRY_COMPARE_WITH_TIMEOUT(place.text(), QByteArray("[General]\nkey=2\n"), patience);
    // What is there already is not written again.
    struct stat before = {};
    struct stat after = {};
    const QByteArray name = QFile::encodeName(place.path);
    QCOMPARE(::stat(name.constData(), &before), 0);
    store.setInteger(key, 2);
    store.flush();
    QCOMPARE(::stat(name.constData(), &after), 0);
    QCOMPARE(after.st_ino, before.st_ino);
}

void SettingsStoreTest::earlierTurnIsWrittenBeforeTheNext()
{
    const Place place;
    SettingsStore store(place.path);
    QEventLoop loop;
    QTimer timer;
    int turn = 0;
    QList<qint64> found;
    connect(&timer, &QTimer::timeout, &loop, [&] {
        if (turn > 0)
            found.append(SettingsStore(place.path).integer(key));
        store.setInteger(key, ++turn);
        if (turn == 6)
            loop.quit();
    });
    timer.start(0);
    loop.exec();
    QCOMPARE(found, (QList<qint64>{1, 2, 3, 4, 5}));
}

void SettingsStoreTest::foreignTextIsKept()
{
    const Place place;
    place.write(
        "; mine\n[General]\nkey = 1 ; old\nodd=@Variant(\\0junk)\n\n; about the group\n[other]\n"
        "a=1, 2\n# end");
    {
        SettingsStore store(place.path);
        store.setInteger(key, 2);
        store.setInteger(QStringLiteral("new"), 3);
        store.setInteger(QStringLiteral("other/b"), 4);
        store.setInteger(QStringLiteral("third/c"), 5);
    }
    QCOMPARE(
        place.text(),
        QByteArray("; mine\n[General]\nkey=2\nodd=@Variant(\\0junk)\nnew=3\n\n; about the group\n"
                   "[other]\na=1, 2\nb=4\n# end\n\n[third]\nc=5\n"));
}

void SettingsStoreTest::editsWhileRunningAreKept()
{
    const Place place;
    place.write("[General]\nkey=1\nhand=1\n");
    SettingsStore store(place.path);
    place.write("[General]\nkey=9\nhand=2\nforeign=3\n");
    store.setInteger(key, 4);
    store.flush();
    QCOMPARE(place.text(), QByteArray("[General]\nkey=4\nhand=2\nforeign=3\n"));
    // Removed altogether: what we write next is all that there is.
    QVERIFY(QFile::remove(place.path));
    store.setInteger(QStringLiteral("later"), 5);
    store.flush();
    QCOMPARE(place.text(), QByteArray("[General]\nlater=5\n"));
}

void SettingsStoreTest::unreadableIsNeverTouched_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *const kind : {"folder", "link to nowhere", "link to itself", "pipe", "device",
                                   "file as folder", "huge"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
    if (::geteuid() != 0) // permissions do not bind root
        QTest::newRow("no permission") << QStringLiteral("no permission");
}

void SettingsStoreTest::unreadableIsNeverTouched()
{
    QFETCH(QString, kind);
    const Place place;
    const QByteArray name = QFile::encodeName(place.path);
    place.write("[General]\nkey=1\n");
    if (kind == QStringLiteral("no permission")) {
        QVERIFY(QFile::setPermissions(place.path, {}));
    } else if (kind == QStringLiteral("huge")) {
        QVERIFY(QFile::resize(place.path, 1LL << 26));
    } else {
        QVERIFY(QFile::remove(place.path));
    }
    if (kind == QStringLiteral("folder"))
        QVERIFY(QDir().mkdir(place.path));
    else if (kind == QStringLiteral("link to nowhere"))
        QVERIFY(QFile::link(QStringLiteral("nowhere"), place.path));
    else if (kind == QStringLiteral("link to itself"))
        QVERIFY(QFile::link(QStringLiteral("velmora.conf"), place.path));
    else if (kind == QStringLiteral("pipe"))
        QCOMPARE(::mkfifo(name.constData(), 0600), 0);
    else if (kind == QStringLiteral("device"))
        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), place.path));
    else if (kind == QStringLiteral("file as folder")) {
        QVERIFY(QDir().rmdir(QFileInfo(place.path).path()));
        QFile file(QFileInfo(place.path).path());
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

    struct stat before = {};
    struct stat after = {};
    const int status = ::lstat(name.constData(), &before);
    const QStringList entries = place.entries();
    // One line, however many assignments follow.
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("cannot (open|read)")));
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
    {
        SettingsStore store(place.path);
        QVERIFY(!store.string(key));
        for (int i = 1; i <= 3; ++i) {
            store.setInteger(key, i);
            store.flush();
            QCOMPARE(store.integer(key), i);
        }
    }
    QCOMPARE(::lstat(name.constData(), &after), status);
    QCOMPARE(after.st_ino, before.st_ino);
    QCOMPARE(after.st_size, before.st_size);
    QCOMPARE(place.entries(), entries);
}

void SettingsStoreTest::brokenFileIsKeptAside_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("salvaged");
    QTest::newRow("no assignment") << QByteArray("[General]\nold=1\nwhat is this\n")
                                   << QByteArray("[General]\nold=1\nkey=2\n");
    QTest::newRow("open heading") << QByteArray("[General]\nold=1\n[other\na=1\n[third]\nb=1\n")
                                  << QByteArray("[General]\nold=1\nkey=2\n[third]\nb=1\n");
    QTest::newRow("open quote") << QByteArray("[General]\nold=\"1\nb=1\n")
                                << QByteArray("[General]\nb=1\nkey=2\n");
    QTest::newRow("binary") << QByteArray("\x7f"
                                          "ELF\0\0\xff\xfe\0=\0\n\0",
                                          14)
                            << QByteArray("[General]\nkey=2\n");
}

void SettingsStoreTest::brokenFileIsKeptAside()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, salvaged);
    const Place place;
    place.write(text);
    QFile earlier(place.path + QStringLiteral(".broken-1"));
    QVERIFY(earlier.open(QIODevice::WriteOnly));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("make no sense")));
    SettingsStore store(place.path);
    // As long as nothing is assigned, nothing is moved.
    store.flush();
    QCOMPARE(place.text(), text);
    store.setInteger(key, 2);
    store.flush();
    QCOMPARE(place.text(), salvaged);
    QCOMPARE(place.text(QStringLiteral(".broken-2")), text);
    store.setInteger(key, 3);
    store.flush();
    QCOMPARE(SettingsStore(place.path).integer(key), 3);
    QVERIFY(!QFile::exists(place.path + QStringLiteral(".broken-3")));
}

void SettingsStoreTest::brokenFileThatCannotBeKeptIsNotTouched()
{
    const Place place;
    const QByteArray text("what is this\n");
    place.write(text);
    for (int i = 1; i <= 100; ++i)
        QVERIFY(QDir().mkdir(place.path + QStringLiteral(".broken-%1").arg(i)));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("make no sense")));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("cannot keep aside")));
    SettingsStore store(place.path);
    store.setInteger(key, 2);
    store.flush();
    QCOMPARE(store.integer(key), 2);
    QCOMPARE(place.text(), text);
}

void SettingsStoreTest::unwritableStaysInMemory()
{
    const Place place;
    place.write("[General]\nkey=1\n");
    // Stands in the way for root too.
    const QString obstacle = place.path + QStringLiteral(".new");
    QVERIFY(QDir().mkdir(obstacle));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("cannot write")));
    SettingsStore store(place.path);
    store.setInteger(key, 2);
    store.flush();
    QCOMPARE(store.integer(key), 2);
    QCOMPARE(place.text(), QByteArray("[General]\nkey=1\n"));
    // The next assignment takes the earlier ones along.
    QVERIFY(QDir().rmdir(obstacle));
    store.setInteger(QStringLiteral("other"), 3);
    store.flush();
    QCOMPARE(place.text(), QByteArray("[General]\nkey=2\nother=3\n"));
}

void SettingsStoreTest::fullDiskKeepsTheOldText()
{
    const Place place;
    place.write("[General]\nkey=1\n");
    SettingsStore store(place.path);
    store.setData(key, QByteArray(5000, 'x'));

    rlimit unlimited = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &unlimited), 0);
    const auto previous = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit full{1000, unlimited.rlim_max};
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("cannot write")));
    ::setrlimit(RLIMIT_FSIZE, &full);
    store.flush();
    ::setrlimit(RLIMIT_FSIZE, &unlimited);
    std::signal(SIGXFSZ, previous);

    QCOMPARE(place.text(), QByteArray("[General]\nkey=1\n"));
    QCOMPARE(place.entries(), QStringList{QStringLiteral("velmora.conf")});
    QCOMPARE(store.data(key)->size(), 5000);
    store.flush();
    QCOMPARE(SettingsStore(place.path).data(key)->size(), 5000);
}

void SettingsStoreTest::locksOfOthersDoNotStall()
{
    const Place place;
    place.write("[General]\nkey=1\n");
    // QSettings would wait for this file as long as process 1 lives.
    QFile lock(place.path + QStringLiteral(".lock"));
    QVERIFY(lock.open(QIODevice::WriteOnly) && lock.write("1\ninit\n\n") > 0);
    QFile other(place.path + QStringLiteral(".new"));
    QVERIFY(other.open(QIODevice::WriteOnly));
    QCOMPARE(::flock(other.handle(), LOCK_EX), 0);

    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("cannot lock")));
    SettingsStore store(place.path);
    store.setInteger(key, 2);
    store.flush();
    QCOMPARE(place.text(), QByteArray("[General]\nkey=1\n"));
    other.close();
    store.flush();
    QCOMPARE(place.text(), QByteArray("[General]\nkey=2\n"));
}

void SettingsStoreTest::linksAndModesAreKept()
{
    const Place place;
    const Place elsewhere;
    elsewhere.write("[General]\nkey=1\n");
    QVERIFY(QFile::setPermissions(elsewhere.path, QFile::ReadOwner | QFile::WriteOwner |
                                                      QFile::ReadGroup | QFile::ReadOther));
    QVERIFY(QDir().mkpath(QFileInfo(place.path).path()));
    QVERIFY(QFile::link(elsewhere.path, place.path));
    SettingsStore(place.path).setInteger(key, 2);
    QVERIFY(QFileInfo(place.path).isSymLink());
    QCOMPARE(elsewhere.text(), QByteArray("[General]\nkey=2\n"));
    QVERIFY(QFile::permissions(elsewhere.path) & QFile::ReadOther);
}

void SettingsStoreTest::survivesBeingKilled()
{
    const Place place;
    QRandomGenerator random(20'240'515);
    QTest::failOnWarning(QRegularExpression(QStringLiteral("make no sense|cannot")));
    for (int round = 0; round < 30; ++round) {
        QProcess writer;
        writer.start(QStringLiteral(SETTINGSSTORE_WRITER), {place.path});
        // Killed after a random number of lines, that is in the middle of some later turn.
        QByteArray lines;
        const auto wanted = static_cast<int>(random.bounded(1U, 12U));
        while (lines.count('\n') < wanted) {
            QVERIFY(writer.waitForReadyRead(patience));
            lines += writer.readAllStandardOutput();
        }
        writer.kill();
        QVERIFY(writer.waitForFinished(patience));
        lines += writer.readAllStandardOutput();
        const QByteArray complete = lines.left(lines.lastIndexOf('\n'));
        const qint64 reported = complete.mid(complete.lastIndexOf('\n') + 1).toLongLong();

        const SettingsStore store(place.path);
        const qint64 turn = store.integer(QStringLiteral("turn"));
        QVERIFY2(turn >= reported, qPrintable(QStringLiteral("%1 < %2").arg(turn).arg(reported)));
        // Of one turn all or nothing.
        QCOMPARE(store.integer(QStringLiteral("last")), turn);
        const auto data = store.data(QStringLiteral("group/data"));
        QCOMPARE(data.value_or(QByteArray()).size(), turn == 0 ? 0 : 100'000 + turn);
    }
    // Nothing piles up beside the file.
    QVERIFY2(place.entries().size() <= 2, qPrintable(place.entries().join(u' ')));
}

QTEST_GUILESS_MAIN(SettingsStoreTest)
#include "SettingsStoreTest.moc"
