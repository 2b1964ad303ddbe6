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

    QStringList takeCalls() { return std::exchange(m_calls, {}); }

    void add(const Disk &disk)
    {
        m_objects.insert(path(u"drives"_qs, disk), drive(disk));
        m_objects.insert(path(u"block_devices"_qs, disk), block(disk));
    }

    [[nodiscard]] QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (message.member() == u"GetManagedObjects"_qs)
            return connection.send(message.createReply(QVariant::fromValue(m_objects)));
        m_calls << message.member() + u' ' + message.path().section(u'/', -1);
        return connection.send(
            isBusy ? message.createErrorReply(u"org.freedesktop.UDisks2.Error.DeviceBusy"_qs,
                                              u"Somebody has a file open"_qs)
                   : message.createReply());
    }

private:
    static QDBusObjectPath path(const QString &kind, const Disk &disk)
    {
        return QDBusObjectPath(u"/org/freedesktop/UDisks2/%1/%2"_qs.arg(kind, disk.name));
    }

    // Some of these are of no interest, but those who ask take it for granted that they are there.
    static Properties drive(const Disk &disk)
    {
        return {{u"org.freedesktop.UDisks2.Drive"_qs,
                 {{u"Vendor"_qs, u"Velmora"_qs},
                  {u"Revision"_qs, QString()},
                  {u"Model"_qs, disk.name},
                  {u"Id"_qs, disk.name},
                  {u"Media"_qs, QString()},
                  {u"MediaCompatibility"_qs, QStringList()},
                  {u"ConnectionBus"_qs, u"usb"_qs},
                  {u"SortKey"_qs, disk.name},
                  {u"Size"_qs, quint64{1'000'000}},
                  {u"MediaAvailable"_qs, true},
                  {u"MediaRemovable"_qs, true},
                  {u"Removable"_qs, true},
                  {u"Ejectable"_qs, disk.isEjectable}}}};
    }

    static Properties block(const Disk &disk)
    {
        struct stat status = {};
        stat(disk.device, &status);
        const QByteArray device = disk.device + QByteArray(1, '\0');
        const QByteArray mounted = QFile::encodeName(disk.mountPoint()) + '\0';
        return {{u"org.freedesktop.UDisks2.Block"_qs,
                 {{u"Device"_qs, device},
                  {u"PreferredDevice"_qs, device},
                  {u"DeviceNumber"_qs, quint64{status.st_rdev}},
                  {u"Drive"_qs, QVariant::fromValue(path(u"drives"_qs, disk))},
                  {u"CryptoBackingDevice"_qs, QVariant::fromValue(QDBusObjectPath(u"/"_qs))},
                  {u"IdUUID"_qs, QString()},
                  {u"HintName"_qs, QString()},
                  {u"HintIconName"_qs, QString()},
                  {u"HintSymbolicIconName"_qs, QString()},
                  {u"Configuration"_qs, QVariant::fromValue(QList<TableEntry>())},
                  {u"IdUsage"_qs, u"filesystem"_qs},
                  {u"IdType"_qs, u"vfat"_qs},
                  {u"IdLabel"_qs, disk.name},
                  {u"Size"_qs, quint64{1'000'000}},
                  {u"HintAuto"_qs, true}}},
                {u"org.freedesktop.UDisks2.Filesystem"_qs,
                 {{u"MountPoints"_qs, QVariant::fromValue(QList<QByteArray>{mounted})}}}};
    }

    QStringList m_calls;
    Objects m_objects{{QDBusObjectPath(u"/org/freedesktop/UDisks2/Manager"_qs),
                       {{u"org.freedesktop.UDisks2.Manager"_qs, {{u"Version"_qs, u"2.9.4"_qs}}}}}};
};

} // namespace

/// With the real gvfs between us and a UDisks that is played.
class VolumesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void saysSoWhereThereIsNoDisk();
    void takesTheDiskAway();

private:
    /// What comes of it for the disk of a file.
    [[nodiscard]] QString eject(const QUrl &file)
    {
        QString answer;
        m_volumes.ejectVolumeOf(
            file, [&answer](bool ejected) { answer = ejected ? u"ejected"_qs : u"stays"_qs; });
        return QTest::qWaitFor([&] { return !answer.isEmpty(); }, 20'000) ? answer
                                                                          : u"no answer"_qs;
    }
    [[nodiscard]] static QUrl fileOn(const Disk &disk)
    {
        return QUrl::fromLocalFile(disk.mountPoint() + u"/folder/a file"_qs);
    }

    const Disk m_stick{u"stick"_qs, "/dev/full", true};
    const Disk m_fixed{u"fixed"_qs, "/dev/zero", false};
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
        QVERIFY(QDir(disk.mountPoint()).mkdir(u"folder"_qs));
        QFile file(fileOn(disk).toLocalFile());
        QVERIFY(file.open(QIODevice::WriteOnly));
        m_disks.add(disk);
    }
    auto bus = QDBusConnection::systemBus();
    QVERIFY(bus.registerVirtualObject(u"/org/freedesktop/UDisks2"_qs, &m_disks,
                                      QDBusConnection::SubPath));
    QVERIFY(bus.registerService(u"org.freedesktop.UDisks2"_qs));
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
    const QStringList ejected{u"Unmount stick"_qs, u"Eject stick"_qs};
    QCOMPARE(eject(fileOn(m_stick)), u"ejected"_qs);
    QCOMPARE(m_disks.takeCalls(), ejected);
    QCOMPARE(eject(QUrl::fromLocalFile(m_stick.mountPoint())), u"ejected"_qs);
    QCOMPARE(m_disks.takeCalls(), ejected);
    QCOMPARE(eject(fileOn(m_fixed)), u"ejected"_qs);
    QCOMPARE(m_disks.takeCalls(), QStringList(u"Unmount fixed"_qs));

    m_disks.isBusy = true;
    QCOMPARE(eject(fileOn(m_stick)), u"stays"_qs);
    m_disks.isBusy = false;
    QCOMPARE(m_disks.takeCalls(), QStringList(u"Unmount stick"_qs));

    // Nobody who is gone is answered.
    auto volumes = std::make_unique<GioVolumes>();
    bool isAnswered = false;
    volumes->ejectVolumeOf(fileOn(m_stick), [&isAnswered](bool) { isAnswered = true; });
    volumes.reset();
    QCOMPARE(eject(fileOn(m_fixed)), u"ejected"_qs);
    QVERIFY(!isAnswered);
}

void VolumesTest::saysSoWhereThereIsNoDisk()
{
    QCOMPARE(eject(QUrl::fromLocalFile(u"/"_qs)), u"stays"_qs);
    QCOMPARE(eject(QUrl(u"https://example.org/a"_qs)), u"stays"_qs);
    QCOMPARE(eject(QUrl::fromLocalFile(m_stick.mountPoint() + u"/gone"_qs)), u"stays"_qs);
    QCOMPARE(m_disks.takeCalls(), QStringList());
}

QTEST_GUILESS_MAIN(VolumesTest)
#include "VolumesTest.moc"
