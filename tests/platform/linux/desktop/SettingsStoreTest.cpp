#include "platform/linux/desktop/SettingsStore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <cstdio>
#include <limits>
#include <sys/stat.h>

using namespace velmora;
using namespace Qt::StringLiterals;

namespace
{

constexpr int patience = 20'000; // milliseconds, for a loaded machine

const QString key = u"key"_s;

/// A fresh folder with the place of a settings file.
struct Place {
    QTemporaryDir folder;
    QString path = folder.filePath(u"velmora/velmora.conf"_s);

    Place() { QDir().mkpath(folder.filePath(u"velmora"_s)); }

    void write(const QByteArray &text, const QString &suffix = {}) const
    {
        QFile file(path + suffix);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }

    QByteArray text(const QString &suffix = {}) const
    {
        QFile file(path + suffix);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

/// Assigns in one turn of the main loop after another until it is killed. At the beginning of a
/// turn it tells the number of the one before.
int writeUntilKilled(const QString &path)
{
    SettingsStore store(path);
    qint64 turn = store.integer(u"turn"_s);
    QTimer timer;
    timer.callOnTimeout([&] {
        std::printf("%lld\n", static_cast<long long>(turn));
        std::fflush(stdout);
        store.setInteger(u"turn"_s, ++turn);
        // So much that a write takes a while.
        store.setData(u"group/data"_s, QByteArray(100'000 + turn, 'x'));
        store.setInteger(u"last"_s, turn);
    });
    timer.start(0);
    return QCoreApplication::exec();
}

} // namespace

class SettingsStoreTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesComeBack();
    void readsWhatIsInTheFile();
    void unreadableIsKeptAside();
    void abandonedLocksDoNotStall();
    void survivesBeingKilled();
};

void SettingsStoreTest::valuesComeBack()
{
    const Place place;
    constexpr qint64 least = std::numeric_limits<qint64>::min();
    QByteArray bytes;
    for (int i = 0; i < 512; ++i)
        bytes.append(static_cast<char>(i / 2 * (i % 2 ? 1 : 7)));
    const QStringList strings{QString(), u" a,b;c=\"d\" \\ \n@\u65e5"_s, u"@ByteArray(no)"_s};
    const auto name = [](int number) { return u"group/%1 ="_s.arg(number); };
    const auto check = [&](const SettingsStore &store) {
        QCOMPARE(store.boolean(name(1)), true);
        QCOMPARE(store.boolean(name(2)), false);
        QCOMPARE(store.integer(name(3)), least);
        QCOMPARE(store.data(name(4)), bytes);
        QCOMPARE(store.number(name(5)), 5e-324);
        QCOMPARE(store.number(name(6)), 0.3);
        for (int i = 0; i < strings.size(); ++i)
            QCOMPARE(store.string(name(10 + i)), strings[i]);
        QVERIFY(!store.boolean(key) && !store.number(key) && !store.string(key) &&
                !store.data(key) && store.integer(key) == 0);
    };
    {
        SettingsStore store(place.path);
        store.setBoolean(name(1), true);
        store.setBoolean(name(2), false);
        store.setInteger(name(3), least);
        store.setData(name(4), bytes);
        store.setNumber(name(5), 5e-324);
        store.setNumber(name(6), 0.3);
        for (int i = 0; i < strings.size(); ++i)
            store.setString(name(10 + i), strings[i]);
        store.setNumber(key, std::numeric_limits<double>::quiet_NaN());
        check(store); // before anything is written
    }
    check(SettingsStore(place.path));
}

void SettingsStoreTest::readsWhatIsInTheFile()
{
    const Place place;
    place.write(
        "; by hand\n[General]\nnan=nan\nhuge=1e999\nword=yes\nlist=1, 2\npoint=@Point(1 2)\n"
        "bytes=@ByteArray(1\\x32\\0)\nTRUE=True\nreal=2.5\nlong=9223372036854775808\n");
    const SettingsStore store(place.path);
    const auto k = [](const char *name) { return QString::fromLatin1(name); };
    for (const char *const name : {"nan", "huge", "word", "list", "point", "bytes"})
        QVERIFY2(!store.number(k(name)) && !store.boolean(k(name)) && store.integer(k(name)) == 0,
                 name);
    for (const char *const name : {"list", "point", "bytes"})
        QVERIFY2(!store.string(k(name)), name);
    QVERIFY(!store.data(k("list")) && !store.data(k("point")));
    QCOMPARE(store.data(k("bytes")), QByteArray("12\0", 3));
    QCOMPARE(store.boolean(k("TRUE")), true);
    QCOMPARE(store.number(k("real")), 2.5);
    QCOMPARE(store.integer(k("long")), 0);
}

void SettingsStoreTest::unreadableIsKeptAside()
{
    for (const auto &kind :
         {u"folder"_s, u"link to nowhere"_s, u"pipe"_s, u"huge"_s, u"binary"_s}) {
        const Place place;
        const QByteArray name = QFile::encodeName(place.path);
        if (kind == u"folder")
            QVERIFY(QDir().mkdir(place.path));
        else if (kind == u"pipe")
            QCOMPARE(::mkfifo(name.constData(), 0600), 0);
        else if (kind == u"link to nowhere")
            QVERIFY(QFile::link(u"nowhere"_s, place.path));
        else
            place.write(QByteArray("\x7f"
                                   "ELF\0\xff\xfe\n",
                                   8));
        if (kind == u"huge")
            QVERIFY(QFile::resize(place.path, 1LL << 26));
        place.write("of an earlier time", u".unreadable-1"_s);
        struct stat before = {};
        struct stat after = {};
        QCOMPARE(::lstat(name.constData(), &before), 0);

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be read"_s));
        SettingsStore(place.path).setInteger(key, 1);
        QVERIFY2(place.text() == "[General]\nkey=1\n", qPrintable(kind));
        QCOMPARE(::lstat((name + ".unreadable-2").constData(), &after), 0);
        QCOMPARE(after.st_ino, before.st_ino);
        QCOMPARE(after.st_size, before.st_size);
    }

    const Place place;
    const QByteArray text("[General]\nold=1\nwhat is this\n");
    place.write(text);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be read"_s));
    QCOMPARE(SettingsStore(place.path).integer(u"old"_s), 1);
    QCOMPARE(place.text(u".unreadable-1"_s), text);
    QTest::failOnWarning(QRegularExpression(u"."_s));
    QCOMPARE(SettingsStore(place.path).integer(u"old"_s), 1); // and it is in order now

    place.write({}); // a file in the place of the folder
    SettingsStore store(place.path + u"/velmora.conf"_s);
    store.setInteger(key, 1);
    QCoreApplication::processEvents();
    QCOMPARE(store.integer(key), 1);
}

void SettingsStoreTest::abandonedLocksDoNotStall()
{
    const Place place;
    const QByteArray ours = QByteArray::number(QCoreApplication::applicationPid());
    for (const QByteArray &lock :
         {QByteArray(), QByteArray("1\nsystemd\n\n"), ours + "\nx\nfar\n"}) {
        place.write(lock, u".lock"_s);
        QElapsedTimer time;
        time.start();
        SettingsStore(place.path).setInteger(key, lock.size());
        QVERIFY2(time.elapsed() < 5000, lock.constData()); // QSettings alone takes half a minute
        QCOMPARE(SettingsStore(place.path).integer(key), lock.size());
    }
}

void SettingsStoreTest::survivesBeingKilled()
{
    const Place place;
    QRandomGenerator random(20'240'515);
    QTest::failOnWarning(QRegularExpression(u"."_s));
    const int rounds = qEnvironmentVariable("VELMORA_KILLS", u"20"_s).toInt();
    for (int round = 0; round < rounds; ++round) {
        QProcess writer;
        writer.start(QCoreApplication::applicationFilePath(),
                     {u"--write-until-killed"_s, place.path});
        // Killed after a random number of lines, that is in the middle of some later turn.
        QByteArray lines;
        const auto wanted = static_cast<int>(random.bounded(1U, 12U));
        while (lines.count('\n') < wanted) {
            QVERIFY(writer.waitForReadyRead(patience));
            lines += writer.readAllStandardOutput();
        }
        writer.kill();
        QVERIFY(writer.waitForFinished(patience));
        const qint64 reported = lines.split('\n').value(wanted - 1).toLongLong();

        const SettingsStore store(place.path);
        const qint64 turn = store.integer(u"turn"_s);
        QVERIFY2(turn >= reported, qPrintable(u"%1 < %2"_s.arg(turn).arg(reported)));
        // Of one turn all or nothing.
        QCOMPARE(store.integer(u"last"_s), turn);
        const auto data = store.data(u"group/data"_s);
        QCOMPARE(data.value_or(QByteArray()).size(), turn == 0 ? 0 : 100'000 + turn);
    }
}

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == u"--write-until-killed")
        return writeUntilKilled(arguments.value(2));
    SettingsStoreTest test;
    return QTest::qExec(&test, arguments);
}

#include "SettingsStoreTest.moc"
