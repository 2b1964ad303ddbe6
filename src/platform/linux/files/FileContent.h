#pragma once

#include "platform/linux/files/FileFailure.h"

#include <memory>
#include <sys/stat.h>
#include <sys/types.h>

namespace velmora
{

/// Copies what is in regular files, in the cheapest way that the two file systems allow: shared
/// blocks, else a copy inside the kernel, else through memory. Holes stay holes. What turns out not
/// to work is not tried again with files of the same file system. One object serves many files, all
/// of which go to one file system, one after the other.
class FileContent
{
public:
    explicit FileContent(const CancelFlag &cancelled)
        : m_cancelled(cancelled)
    {
    }

    /// From one open file, which is described by `info`, to another, which is empty. Throws
    /// FileFailure; `path` is for its message.
    void copy(int from, int to, const struct stat &info, const QByteArray &path);

private:
    [[nodiscard]] bool clone(int from, int to);
    [[nodiscard]] bool copyExtents(int from, int to, off_t size, const QByteArray &path);
    void copyRange(int from, int to, off_t offset, off_t end, const QByteArray &path);
    [[nodiscard]] off_t copyInKernel(int from, int to, off_t offset, off_t end,
                                     const QByteArray &path);
    void copyThroughMemory(int from, int to, off_t offset, off_t end, const QByteArray &path);
    void checkCancelled(const QByteArray &path) const;

    const CancelFlag &m_cancelled;
    dev_t m_device = 0; ///< that the files come from
    bool m_canClone = true;
    bool m_canCopyInKernel = true;
    std::unique_ptr<char[]> m_buffer;
};

} // namespace velmora
