#pragma once

#include "platform/linux/files/FileFailure.h"

#include <QByteArray>

#include <gio/gio.h>
#include <map>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace velmora
{

/// Copies one item with all that is in it, as GIO copies single files: with permissions, times and
/// extended attributes. Names of one file stay names of one file; pipes, sockets and devices are
/// made anew and never opened. Works in the calling thread, until it is cancelled.
class TreeCopy
{
public:
    /// By absolute paths. The target must not exist.
    TreeCopy(QByteArray source, QByteArray target, GCancellable *cancellable);

    /// Throws FileFailure or a filesystem_error, and leaves behind what it has made until then.
    void copy() { copyEntry({}); }

    /// Removes from the source what was copied, and only that: a file that has changed since, or
    /// has come in the meantime, stays and is a failure.
    void removeSource() const;

private:
    struct Copied {
        QByteArray path; ///< below the item, with a slash in front; empty for the item itself
        struct stat info;
    };

    void copyEntry(const QByteArray &path);
    [[nodiscard]] bool isLinkedToCopy(const QByteArray &target, const struct stat &info);

    QByteArray m_source;
    QByteArray m_target;
    GCancellable *m_cancellable;
    std::vector<Copied> m_copied; ///< a folder comes after what is in it
    /// Where files with several names were copied to, by device and inode.
    std::map<std::pair<dev_t, ino_t>, QByteArray> m_linked;
};

/// What is in a folder, "." and ".." left out. Read in one go, so that the number of open files
/// does not limit the depth of a tree. Throws filesystem_error.
[[nodiscard]] std::vector<QByteArray> namesIn(const QByteArray &folder);

/// Removes an item that we have made ourselves, with all that is in it. What resists stays.
void discard(const QByteArray &path);

} // namespace velmora
