#include "platform/linux/files/FolderListing.h"
#include "platform/linux/files/TreeCopy.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace velmora
{

namespace
{

bool isFolder(int parent, const FolderListing::Entry &entry)
{
    struct stat info = {};
    return entry.type == DT_DIR ||
           (entry.type == DT_UNKNOWN &&
            fstatat(parent, entry.name, &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(info.st_mode));
}

/// Removes the files of a folder and returns the folders in it.
std::vector<QByteArray> empty(int parent, const QByteArray &path)
{
    std::vector<QByteArray> folders;
    const int fd =
        openat(parent, path.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        return folders;
    }
    fchmod(fd, 0700); // it may have been given its final permissions
    FolderListing listing(fd, path);
    while (const auto entry = listing.next()) {
        if (isFolder(listing.fd(), *entry)) {
            folders.push_back(path + '/' + entry->name);
        } else {
            unlinkat(listing.fd(), entry->name, 0);
        }
    }
    return folders;
}

} // namespace

void discard(int parent, const QByteArray &name)
{
    if (unlinkat(parent, name.constData(), 0) == 0) {
        return;
    }
    std::vector<QByteArray> folders{name};
    try {
        for (std::size_t i = 0; i < folders.size(); ++i) {
            const auto deeper = empty(parent, folders.at(i));
            folders.insert(folders.end(), deeper.begin(), deeper.end());
        }
    } catch (const FileFailure &) {
        // What can be removed is.
    }
    // NOLINTNEXTLINE(modernize-loop-convert): clang 14 cannot read the library's reversed views
    for (auto folder = folders.crbegin(); folder != folders.crend(); ++folder) {
        unlinkat(parent, folder->constData(), AT_REMOVEDIR);
    }
}

} // namespace velmora
