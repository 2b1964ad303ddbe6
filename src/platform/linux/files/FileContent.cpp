#include "platform/linux/files/FileContent.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace velmora
{

namespace
{

constexpr std::size_t bufferSize = std::size_t{256} * 1024;
constexpr off_t kernelChunk = off_t{16} * 1024 * 1024; // between two looks at the flag
constexpr off_t smallSize = off_t{64} * 1024;          // below it a read and a write are quicker
constexpr off_t toTheEnd = std::numeric_limits<off_t>::max();

/// Not a fault of the file: this pair of files has to be copied another way.
bool isUnsupported(int code)
{
    return code == EXDEV || code == EINVAL || code == EOPNOTSUPP || code == ENOSYS ||
           code == ENOTTY || code == EPERM || code == ETXTBSY;
}

} // namespace

void FileContent::copy(int from, int to, const struct stat &info, const QByteArray &path)
{
    checkCancelled(path);
    if (std::exchange(m_device, info.st_dev) != info.st_dev) {
        m_canClone = m_canCopyInKernel = true;
    }
    // A size of 0 says nothing of the files that the kernel makes up: these are read as well.
    if (info.st_size > 0 && clone(from, to)) {
        return;
    }
    const bool hasHoles = info.st_blocks < (info.st_size + 511) / 512;
    if (hasHoles && copyExtents(from, to, info.st_size, path)) {
        return;
    }
    if (info.st_size < smallSize) {
        copyThroughMemory(from, to, 0, toTheEnd, path);
    } else {
        copyRange(from, to, 0, toTheEnd, path);
    }
}

bool FileContent::clone(int from, int to)
{
    if (!m_canClone) {
        return false;
    }
    if (ioctl(to, FICLONE, from) == 0) {
        return true;
    }
    // Other errors are of this one file, and a real fault comes up again when it is copied.
    m_canClone = errno != EXDEV && errno != EOPNOTSUPP && errno != ENOTTY && errno != ENOSYS;
    return false;
}

/// False if the file system does not tell where the holes are.
bool FileContent::copyExtents(int from, int to, off_t size, const QByteArray &path)
{
    off_t end = 0;
    while (end < size) {
        const off_t start = lseek(from, end, SEEK_DATA);
        if (start < 0 && errno == ENXIO) {
            break; // a hole up to the end
        }
        if (start < 0) {
            return false;
        }
        end = lseek(from, start, SEEK_HOLE);
        if (end < 0) {
            return false;
        }
        copyRange(from, to, start, end, path);
    }
    // The last hole takes up no space but counts.
    if (ftruncate(to, std::max(size, end)) != 0) {
        throw FileFailure(path, errno);
    }
    return true;
}

void FileContent::copyRange(int from, int to, off_t offset, off_t end, const QByteArray &path)
{
    const off_t reached = copyInKernel(from, to, offset, end, path);
    if (reached < end) {
        copyThroughMemory(from, to, reached, end, path);
    }
}

/// How far it came: not to the end where the kernel cannot do it, or sees an end too soon, as it
/// does in some file systems.
off_t FileContent::copyInKernel(int from, int to, off_t offset, off_t end, const QByteArray &path)
{
    while (m_canCopyInKernel && offset < end) {
        checkCancelled(path);
        off_t in = offset;
        off_t out = offset;
        const auto length = static_cast<std::size_t>(std::min(kernelChunk, end - offset));
        const ssize_t copied = copy_file_range(from, &in, to, &out, length, 0);
        if (copied > 0) {
            offset += copied;
        } else if (copied == 0) {
            break;
        } else if (isUnsupported(errno)) {
            m_canCopyInKernel = false;
        } else if (errno != EINTR) {
            throw FileFailure(path, errno);
        }
    }
    return offset;
}

void FileContent::copyThroughMemory(int from, int to, off_t offset, off_t end,
                                    const QByteArray &path)
{
    if (!m_buffer) {
        m_buffer = std::make_unique_for_overwrite<char[]>(bufferSize);
    }
    while (offset < end) {
        checkCancelled(path);
        const auto wanted =
            static_cast<std::size_t>(std::min<off_t>(static_cast<off_t>(bufferSize), end - offset));
        const ssize_t got = pread(from, m_buffer.get(), wanted, offset);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            throw FileFailure(path, errno);
        }
        if (got == 0) {
            return;
        }
        for (ssize_t written = 0; written < got;) {
            const ssize_t put = pwrite(to, m_buffer.get() + written,
                                       static_cast<std::size_t>(got - written), offset + written);
            if (put < 0 && errno != EINTR) {
                throw FileFailure(path, errno);
            }
            written += std::max<ssize_t>(put, 0);
        }
        offset += got;
    }
}

void FileContent::checkCancelled(const QByteArray &path) const
{
    if (m_cancelled.load(std::memory_order_relaxed)) {
        throw FileFailure(path, ECANCELED);
    }
}

} // namespace velmora
