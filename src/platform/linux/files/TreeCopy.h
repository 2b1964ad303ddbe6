#pragma once

#include "platform/linux/files/FileFailure.h"

#include <QByteArray>

#include <map>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace velmora
{

/// Copies one item with all that is in it: permissions, times, links, extended attributes; names of
/// one file stay names of one file. Pipes, sockets and devices are made anew and never opened.
/// Works in the calling thread.
class TreeCopy
{
public:
    /// By absolute paths. The target must not exist.
    TreeCopy(QByteArray source, QByteArray target, const CancelFlag &cancelled);

    /// Throws FileFailure, and leaves behind what it has made until then.
    void copy();

    /// Removes from the source what was copied, and only that: a file that has changed since, or
    /// has come in the meantime, stays and is a failure.
    void removeSource() const;

private:
    struct Copied {
        QByteArray path; ///< below the item, with a slash in front; empty for the item itself
        struct stat info;
    };

    void copyEntry(const QByteArray &path);
    void copyFile(const QByteArray &path, const struct stat &info);

    QByteArray m_source;
    QByteArray m_target;
    const CancelFlag &m_cancelled;
    std::vector<Copied> m_copied; ///< a folder comes after what is in it
    /// Where files with several names were copied to, by device and inode.
    std::map<std::pair<dev_t, ino_t>, QByteArray> m_linked;
};

/// What is in a folder, "." and ".." left out. Read in one go, so that the number of open files
/// does not limit the depth of a tree. Throws FileFailure.
[[nodiscard]] std::vector<QByteArray> namesIn(const QByteArray &folder);

/// Removes an item that we have made ourselves, with all that is in it. What resists stays.
void discard(const QByteArray &path);

} // namespace velmora
