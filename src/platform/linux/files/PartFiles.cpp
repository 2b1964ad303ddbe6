#include "platform/linux/files/PartFiles.h"

#include "platform/linux/files/FileFailure.h"
#include "platform/linux/files/FolderListing.h"
#include "platform/linux/files/TreeCopy.h"

#include <QCryptographicHash>
#include <QFile>
#include <QRandomGenerator>

#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace velmora
{

namespace
{

constexpr char prefix[] = ".velmora-";
constexpr char suffix[] = ".part";
constexpr int base = 36;

QByteArray contentOf(const char *path)
{
    QFile file(QString::fromLatin1(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Short, and nothing that identifies the machine elsewhere.
QByteArray digest(const QByteArray &secret)
{
    return QCryptographicHash::hash("velmora " + secret, QCryptographicHash::Sha256)
        .toHex()
        .left(10);
}

/// Of a running process: in what unit is of no interest. The name, in parentheses, may hold
/// anything.
std::optional<quint64> startOf(qint64 pid)
{
    const QByteArray stat = contentOf(("/proc/" + QByteArray::number(pid) + "/stat").constData());
    constexpr int afterName = 20; // it is the 22nd field
    const auto fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    bool isNumber = false;
    const quint64 start = fields.value(afterName - 1).toULongLong(&isNumber);
    return isNumber ? std::optional(start) : std::nullopt;
}

std::optional<PartOwner> ownerOf(const QByteArray &name)
{
    if (!name.startsWith(prefix) || !name.endsWith(suffix)) {
        return std::nullopt;
    }
    const auto parts =
        name.mid(qstrlen(prefix), name.size() - qsizetype(qstrlen(prefix) + qstrlen(suffix)))
            .split('-');
    if (parts.size() != 5 || parts[0].isEmpty()) {
        return std::nullopt;
    }
    PartOwner owner;
    bool hasPid = false;
    bool hasStart = false;
    owner.machine = parts[0];
    owner.boot = parts[1];
    owner.pid = parts[2].toLongLong(&hasPid, base);
    owner.start = parts[3].toULongLong(&hasStart, base);
    return hasPid && hasStart && owner.pid > 0 ? std::optional(owner) : std::nullopt;
}

bool isLeftover(int folder, const QByteArray &name, const PartOwner &self)
{
    const auto owner = ownerOf(name);
    struct stat info = {};
    if (!owner || owner->machine != self.machine ||
        fstatat(folder, name.constData(), &info, AT_SYMLINK_NOFOLLOW) != 0 ||
        info.st_uid != geteuid()) {
        return false;
    }
    // A name space of its own looks like another boot, but its processes do not write in the past.
    return owner->boot == self.boot ? startOf(owner->pid) != owner->start
                                    : info.st_ctim.tv_sec < self.bootSeconds;
}

} // namespace

PartOwner PartOwner::self()
{
    PartOwner self;
    char space[64] = {};
    const ssize_t length = readlink("/proc/self/ns/pid", space, sizeof space);
    const QByteArray machine = contentOf("/etc/machine-id").trimmed();
    const QByteArray boot = contentOf("/proc/sys/kernel/random/boot_id").trimmed();
    const auto start = startOf(getpid());
    timespec now{};
    timespec running{};
    clock_gettime(CLOCK_REALTIME, &now);
    clock_gettime(CLOCK_BOOTTIME, &running);
    self.pid = getpid();
    self.start = start.value_or(0);
    self.bootSeconds = now.tv_sec - running.tv_sec;
    // Without all of these, nobody can tell whether we still run.
    if (length > 0 && !machine.isEmpty() && !boot.isEmpty() && start) {
        self.machine = digest(machine);
        self.boot = digest(boot + QByteArray(space, length));
    }
    return self;
}

QByteArray temporaryName(const PartOwner &owner)
{
    const QByteArray random = QByteArray::number(QRandomGenerator::global()->generate64(), base);
    return prefix + owner.machine + '-' + owner.boot + '-' + QByteArray::number(owner.pid, base) +
           '-' + QByteArray::number(owner.start, base) + '-' + random + suffix;
}

void removeLeftovers(int folder, const PartOwner &self)
{
    const int fd = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (self.machine.isEmpty() || fd < 0) {
        return;
    }
    QList<QByteArray> leftovers;
    try {
        FolderListing listing(fd, {});
        while (const auto entry = listing.next()) {
            if (isLeftover(folder, entry->name, self)) {
                leftovers << entry->name;
            }
        }
    } catch (const FileFailure &) {
        // A folder that can only be written to keeps them.
    }
    for (const QByteArray &name : std::as_const(leftovers)) {
        discard(folder, name);
    }
}

} // namespace velmora
