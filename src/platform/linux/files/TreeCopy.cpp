#include "platform/linux/files/TreeCopy.h"

#include "platform/linux/UniqueFd.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <memory>
#include <sys/xattr.h>

namespace velmora
{

namespace
{

void check(int result, const QByteArray &path)
{
    if (result != 0) {
        throw FileFailure(path, errno);
    }
}

constexpr off_t kernelChunk = off_t{16} * 1024 * 1024; // between two looks at the flag
constexpr off_t toTheEnd = std::numeric_limits<off_t>::max();
constexpr std::size_t bufferSize = std::size_t{64} * 1024; // holds any extended attribute

/// Not on the stack, which deep trees need.
auto makeBuffer()
{
    return std::make_unique_for_overwrite<char[]>(bufferSize);
}

/// One source and its copy, both open.
struct Content {
    int from;
    int to;
    const QByteArray &path; ///< for messages
    const CancelFlag &cancelled;

    void copyRange(off_t offset, off_t end) const;
    [[nodiscard]] bool copyExtents(off_t size) const;
    [[nodiscard]] ssize_t copySome(off_t offset, off_t most) const;
};

void Content::copyRange(off_t offset, off_t end) const
{
    ssize_t copied = 1;
    while (offset < end && copied != 0) {
        copied = cancelled ? -1 : copySome(offset, std::min(kernelChunk, end - offset));
        if (copied < 0 && (cancelled || errno != EINTR)) {
            throw FileFailure(path, cancelled ? ECANCELED : errno);
        }
        offset += std::max<ssize_t>(copied, 0);
    }
}

/// False if the file system does not tell where the holes are.
bool Content::copyExtents(off_t size) const
{
    off_t start = 0;
    off_t end = 0;
    while ((start = lseek(from, end, SEEK_DATA)) >= 0 &&
           (end = lseek(from, start, SEEK_HOLE)) >= 0) {
        copyRange(start, end);
    }
    // The last hole takes up no space but counts.
    return errno == ENXIO && ftruncate(to, std::max(size, end)) == 0;
}

/// Returns how much it was: 0 at the end, -1 with errno on an error.
ssize_t Content::copySome(off_t offset, off_t most) const
{
    off_t in = offset;
    off_t out = offset;
    const ssize_t copied = copy_file_range(from, &in, to, &out, static_cast<std::size_t>(most), 0);
    if (copied > 0) {
        return copied;
    }
    // Between some file systems this does not work, and in files that the kernel makes up it sees
    // nothing. A real fault comes up again.
    const auto buffer = makeBuffer();
    const auto wanted = std::min(static_cast<std::size_t>(most), bufferSize);
    const ssize_t got = pread(from, buffer.get(), wanted, offset);
    return got > 0 ? pwrite(to, buffer.get(), static_cast<std::size_t>(got), offset) : got;
}

/// Also what shows only on closing is a failure.
void copyContent(const QByteArray &from, const QByteArray &to, const CancelFlag &cancelled)
{
    // A file that became a pipe behind our back must not hold us up, nor a terminal become ours.
    constexpr int sourceFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const UniqueFd source(open(from.constData(), sourceFlags));
    struct stat info = {};
    if (!source.isOpen() || fstat(source.get(), &info) != 0) {
        throw FileFailure(from, errno);
    }
    UniqueFd target(open(to.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!target.isOpen()) {
        throw FileFailure(from, errno);
    }
    const Content content{source.get(), target.get(), from, cancelled};
    const bool hasHoles = info.st_blocks < (info.st_size + 511) / 512;
    if (!hasHoles || !content.copyExtents(info.st_size)) {
        content.copyRange(0, toTheEnd);
    }
    // Network file systems and quotas tell only now what could not be written.
    if (close(target.release()) != 0) {
        throw FileFailure(from, errno);
    }
}

/// Owner where that is allowed, extended attributes (access lists among them), permissions and
/// times. What the target's file system does not know, or does not let us set, is left out.
void copyAttributes(const QByteArray &from, const QByteArray &to, const struct stat &info)
{
    // The order matters: a new owner takes away rights and capabilities, and permissions may forbid
    // to write attributes.
    const bool keepsOwner = lchown(to.constData(), info.st_uid, info.st_gid) == 0;
    [[maybe_unused]] const bool keepsGroup =
        keepsOwner || lchown(to.constData(), static_cast<uid_t>(-1), info.st_gid) == 0;
    const auto names = makeBuffer();
    const auto value = makeBuffer();
    const ssize_t size = llistxattr(from.constData(), names.get(), bufferSize);
    for (const char *name = names.get(); name < names.get() + size; name += std::strlen(name) + 1) {
        const ssize_t length = lgetxattr(from.constData(), name, value.get(), bufferSize);
        if (length >= 0) {
            lsetxattr(to.constData(), name, value.get(), static_cast<std::size_t>(length), 0);
        }
    }
    // Of a file that became somebody else's, the bits that lend its owner's rights do not survive.
    if (!S_ISLNK(info.st_mode)) {
        chmod(to.constData(), info.st_mode & (keepsOwner ? 07777 : 01777));
    }
    const std::array times{info.st_atim, info.st_mtim};
    utimensat(AT_FDCWD, to.constData(), times.data(), AT_SYMLINK_NOFOLLOW);
}

} // namespace

TreeCopy::TreeCopy(QByteArray source, QByteArray target, const CancelFlag &cancelled)
    : m_source(std::move(source))
    , m_target(std::move(target))
    , m_cancelled(cancelled)
{
}

void TreeCopy::copy()
{
    copyEntry({});
    // Last: filling a folder changes its times, and its permissions may forbid it.
    for (const auto &[path, info] : m_copied) {
        if (S_ISDIR(info.st_mode)) {
            copyAttributes(m_source + path, m_target + path, info);
        }
    }
}

void TreeCopy::copyEntry(const QByteArray &path)
{
    const QByteArray source = m_source + path;
    struct stat info = {};
    check(lstat(source.constData(), &info), source);
    if (S_ISDIR(info.st_mode)) {
        check(mkdir((m_target + path).constData(), 0700), source);
        for (const QByteArray &name : namesIn(source)) {
            copyEntry(path + '/' + name);
        }
    } else {
        copyFile(path, info);
    }
    m_copied.push_back({path, info});
}

/// Anything but a folder.
void TreeCopy::copyFile(const QByteArray &path, const struct stat &info)
{
    const QByteArray source = m_source + path;
    const QByteArray target = m_target + path;
    if (info.st_nlink > 1) {
        const auto [first, isNew] = m_linked.try_emplace({info.st_dev, info.st_ino}, target);
        // Where links are unknown or there are too many, a second copy has to do.
        if (!isNew && link(first->second.constData(), target.constData()) == 0) {
            return;
        }
    }
    if (S_ISREG(info.st_mode)) {
        copyContent(source, target, m_cancelled);
    } else if (S_ISLNK(info.st_mode)) {
        std::error_code error;
        std::filesystem::copy_symlink(source.constData(), target.constData(), error);
        if (error) {
            throw FileFailure(source, error.value());
        }
    } else {
        check(mknod(target.constData(), info.st_mode, info.st_rdev), source);
    }
    copyAttributes(source, target, info);
}

void TreeCopy::removeSource() const
{
    for (const auto &[path, before] : m_copied) {
        const QByteArray source = m_source + path;
        struct stat info = {};
        check(lstat(source.constData(), &info), source);
        const auto &[seconds, nanoseconds] = info.st_mtim;
        const bool isSame = info.st_ino == before.st_ino && info.st_dev == before.st_dev &&
                            info.st_size == before.st_size && seconds == before.st_mtim.tv_sec &&
                            nanoseconds == before.st_mtim.tv_nsec;
        if (!isSame && !S_ISDIR(before.st_mode)) {
            throw FileFailure(source, QStringLiteral("It has changed while it was moved"));
        }
        check(S_ISDIR(before.st_mode) ? rmdir(source.constData()) : unlink(source.constData()),
              source);
    }
}

std::vector<QByteArray> namesIn(const QByteArray &folder)
{
    std::vector<QByteArray> names;
    std::error_code error;
    auto entry = std::filesystem::directory_iterator(folder.constData(), error);
    for (; !error && entry != end(entry); entry.increment(error)) {
        names.push_back(QByteArray::fromStdString(entry->path().filename().native()));
    }
    if (error) {
        throw FileFailure(folder, error.value());
    }
    return names;
}

void discard(const QByteArray &path)
{
    // A folder may have its final permissions already. Of a link this would change the target.
    if (unlink(path.constData()) == 0 || chmod(path.constData(), 0700) != 0) {
        return;
    }
    try {
        for (const QByteArray &name : namesIn(path)) {
            discard(path + '/' + name);
        }
    } catch (const FileFailure &) {
        // What can be removed is.
    }
    rmdir(path.constData());
}

} // namespace velmora
