#include "platform/linux/files/GioVolumes.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QDir>
#include <QFile>
#include <QTest>

#include <cerrno>
#include <cstring>
#include <sys/mount.h>
#include <sys/stat.h>

using namespace velmora;

using Properties = QMap<QString, QVariantMap>; // of the interfaces of an object
using Objects = QMap<QDBusObjectPath, Properties>;
Q_DECLARE_METATYPE(Properties)
Q_DECLARE_METATYPE(Objects)

/// What a system's tables of disks say about one. Nothing, here.
struct TableEntry {
    QString table;
    QVariantMap fields;
};
Q_DECLARE_METATYPE(TableEntry)

QDBusArgument &operator<<(QDBusArgument &argument, const TableEntry &entry)
{
    argument.beginStructure();
    argument << entry.table << entry.fields;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, TableEntry &entry)
{
    argument.beginStructure();
    argument >> entry.table >> entry.fields;
    argument.endStructure();
    return argument;
}

namespace
{

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

constexpr auto notAllowed = "This process may not mount file systems";

/// A disk that can be taken away. Its device is one that is there on every machine; what that one
/// really is does not matter to gvfs.
struct Disk {
    QString name;
    const char *device;
    bool isEjectable; ///< else it can only be unmounted

    /// In the home folder, so that gvfs takes it for the user's.
    [[nodiscard]] QString mountPoint() const { return QDir::homePath() + u'/' + name; }
};

/// Plays UDisks.
class FakeUDisks final : public QDBusVirtualObject
{
    Q_OBJECT

public:
    bool isBusy = false; ///< and says so to whoever wants a disk

    [[nodiscard]] QStringList takeCalls() { return std::exchange(m_calls, {}); }

    void add(const Disk &disk)
    {
        m_objects.insert(path("/drives/", disk), drive(disk));
        m_objects.insert(path("/block_devices/", disk), block(disk));
    }

    [[nodiscard]] QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (message.member() == text("GetManagedObjects")) {
            return connection.send(message.createReply(QVariant::fromValue(m_objects)));
        }
        m_calls << message.member() + u' ' + message.path().section(u'/', -1);
        return connection.send(
            isBusy ? message.createErrorReply(text("org.freedesktop.UDisks2.Error.DeviceBusy"),
                                              text("Somebody has a file open"))
                   : message.createReply());
    }

private:
    static QDBusObjectPath path(const char *kind, const Disk &disk)
    {
        return QDBusObjectPath(text("/org/freedesktop/UDisks2") + text(kind) + disk.name);
    }

    // Some of these are of no interest, but those who ask take it for granted that they are there.
    static Properties drive(const Disk &disk)
    {
        return {{text("org.freedesktop.UDisks2.Drive"),
                 {{text("Vendor"), text("Velmora")},
                  {text("Revision"), QString()},
                  {text("Model"), disk.name},
                  {text("Id"), disk.name},
                  {text("Media"), QString()},
                  {text("MediaCompatibility"), QStringList()},
                  {text("ConnectionBus"), text("usb")},
                  {text("SortKey"), disk.name},
                  {text("Size"), quint64{1'000'000}},
                  {text("MediaAvailable"), true},
                  {text("MediaRemovable"), true},
                  {text("Removable"), true},
                  {text("Ejectable"), disk.isEjectable}}}};
    }

    static Properties block(const Disk &disk)
    {
        struct stat status = {};
        stat(disk.device, &status);
        const QByteArray device = disk.device + QByteArray(1, '\0');
        const QByteArray mounted = QFile::encodeName(disk.mountPoint()) + '\0';
        return {{text("org.freedesktop.UDisks2.Block"),
                 {{text("Device"), device},
                  {text("PreferredDevice"), device},
                  {text("DeviceNumber"), quint64{status.st_rdev}},
                  {text("Drive"), QVariant::fromValue(path("/drives/", disk))},
                  {text("CryptoBackingDevice"), QVariant::fromValue(QDBusObjectPath(text("/")))},
                  {text("IdUUID"), QString()},
                  {text("HintName"), QString()},
                  {text("HintIconName"), QString()},
                  {text("HintSymbolicIconName"), QString()},
                  {text("Configuration"), QVariant::fromValue(QList<TableEntry>())},
                  {text("IdUsage"), text("filesystem")},
                  {text("IdType"), text("vfat")},
                  {text("IdLabel"), disk.name},
                  {text("Size"), quint64{1'000'000}},
                  {text("HintAuto"), true}}},
                {text("org.freedesktop.UDisks2.Filesystem"),
                 {{text("MountPoints"), QVariant::fromValue(QList<QByteArray>{mounted})}}}};
    }

    QStringList m_calls;
    Objects m_objects{
        {QDBusObjectPath(text("/org/freedesktop/UDisks2/Manager")),
         {{text("org.freedesktop.UDisks2.Manager"), {{text("Version"), text("2.9.4")}}}}}};
};

} // namespace

/// With the real gvfs between us and a UDisks that is played.
class VolumesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void takesTheDiskAway();
    void saysSoWhereThereIsNoDisk();
    void answersNobodyWhoIsGone();

private:
    /// What comes of it for the disk of a file.
    [[nodiscard]] QString eject(const QUrl &file)
    {
        QString answer;
        m_volumes.ejectVolumeOf(
            file, [&answer](bool ejected) { answer = text(ejected ? "ejected" : "stays"); });
        return QTest::qWaitFor([&] { return !answer.isEmpty(); }, 20'000) ? answer
                                                                          : text("no answer");
    }
    [[nodiscard]] static QUrl fileOn(const Disk &disk)
    {
        return QUrl::fromLocalFile(disk.mountPoint() + QStringLiteral("/folder/a file"));
    }

    const Disk m_stick{QStringLiteral("stick"), "/dev/full", true};
    const Disk m_fixed{QStringLiteral("fixed"), "/dev/zero", false};
    FakeUDisks m_disks;
    GioVolumes m_volumes;
    bool m_mayMount = true; ///< containers may forbid it
};

void VolumesTest::initTestCase()
{
    qDBusRegisterMetaType<Properties>();
    qDBusRegisterMetaType<Objects>();
    qDBusRegisterMetaType<QList<QByteArray>>();
    qDBusRegisterMetaType<TableEntry>();
    qDBusRegisterMetaType<QList<TableEntry>>();
    for (const Disk &disk : {m_stick, m_fixed}) {
        const QByteArray place = QFile::encodeName(disk.mountPoint());
        QVERIFY(QDir().mkdir(disk.mountPoint()));
        // Of a kind that is not taken for the system's own, and that needs no device.
        m_mayMount = mount(disk.device, place.constData(), "ramfs", 0, nullptr) == 0;
        QVERIFY2(m_mayMount || errno == EPERM, std::strerror(errno));
        QVERIFY(QDir(disk.mountPoint()).mkdir(QStringLiteral("folder")));
        QFile file(fileOn(disk).toLocalFile());
        QVERIFY(file.open(QIODevice::WriteOnly));
        m_disks.add(disk);
    }
    auto bus = QDBusConnection::systemBus();
    QVERIFY(bus.registerVirtualObject(text("/org/freedesktop/UDisks2"), &m_disks,
                                      QDBusConnection::SubPath));
    QVERIFY(bus.registerService(text("org.freedesktop.UDisks2")));
}

void VolumesTest::cleanupTestCase()
{
    for (const Disk &disk : {m_stick, m_fixed}) {
        umount2(QFile::encodeName(disk.mountPoint()).constData(), MNT_DETACH);
    }
}

void VolumesTest::takesTheDiskAway()
{
    if (!m_mayMount) {
        QSKIP(notAllowed);
    }
    const QStringList ejected{text("Unmount stick"), text("Eject stick")};
    QCOMPARE(eject(fileOn(m_stick)), text("ejected"));
    QCOMPARE(m_disks.takeCalls(), ejected);
    QCOMPARE(eject(QUrl::fromLocalFile(m_stick.mountPoint())), text("ejected"));
    QCOMPARE(m_disks.takeCalls(), ejected);
    QCOMPARE(eject(fileOn(m_fixed)), text("ejected"));
    QCOMPARE(m_disks.takeCalls(), QStringList(text("Unmount fixed")));

    m_disks.isBusy = true;
    QCOMPARE(eject(fileOn(m_stick)), text("stays"));
    m_disks.isBusy = false;
    QCOMPARE(m_disks.takeCalls(), QStringList(text("Unmount stick")));
}

void VolumesTest::saysSoWhereThereIsNoDisk()
{
    QCOMPARE(eject(QUrl::fromLocalFile(QStringLiteral("/"))), text("stays"));
    QCOMPARE(eject(QUrl(QStringLiteral("https://example.org/a"))), text("stays"));
    QCOMPARE(eject(QUrl::fromLocalFile(m_stick.mountPoint() + QStringLiteral("/gone"))),
             text("stays"));
    QCOMPARE(m_disks.takeCalls(), QStringList());
}

void VolumesTest::answersNobodyWhoIsGone()
{
    if (!m_mayMount) {
        QSKIP(notAllowed);
    }
    auto volumes = std::make_unique<GioVolumes>();
    bool isAnswered = false;
    volumes->ejectVolumeOf(fileOn(m_stick), [&isAnswered](bool) { isAnswered = true; });
    volumes.reset();
    QCOMPARE(eject(fileOn(m_fixed)), text("ejected"));
    QVERIFY(!isAnswered);
}

QTEST_GUILESS_MAIN(VolumesTest)
#include "VolumesTest.moc"
