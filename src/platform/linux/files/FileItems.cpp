#include "platform/linux/files/FileItems.h"

#include "platform/LocalPath.h"
#include "platform/linux/files/LocalFile.h"
#include "platform/linux/files/TreeCopy.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace velmora
{

namespace
{

namespace fs = std::filesystem;

/// Returns 0 or an errno value, and then has done nothing.
int renameToFree(const char *from, const char *to)
{
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    // Some file systems, such as NFS, cannot rename so. A second name is as safe; where there are
    // none, looking first has to do.
    if (link(from, to) == 0) {
        if (unlink(from) == 0) {
            return 0;
        }
        const int code = errno;
        unlink(to);
        return code;
    }
    struct stat info = {};
    if (errno == EEXIST || errno == EXDEV || lstat(to, &info) == 0) {
        return errno == EXDEV ? EXDEV : EEXIST;
    }
    return rename(from, to) == 0 ? 0 : errno;
}

/// Tells early what would come up late, or under the wrong name, or never.
void checkTransfer(const QByteArray &item, const QByteArray &folder)
{
    std::error_code error;
    const fs::path target = fs::canonical((folder + "/.").constData(), error);
    if (error) {
        throw FileFailure(folder, error.value());
    }
    const QByteArray name = fileName(item);
    if (name.isEmpty() || name == "." || name == "..") {
        throw FileFailure(item, EINVAL);
    }
    if (fs::symlink_status(item.constData(), error).type() == fs::file_type::directory) {
        const fs::path self = fs::canonical(item.constData(), error);
        if (std::mismatch(self.begin(), self.end(), target.begin(), target.end()).first ==
            self.end()) {
            throw FileFailure(item, QStringLiteral("A folder cannot go into itself"));
        }
    }
}

/// Under another name until it is complete, and gone again if it does not get that far.
TreeCopy copyInto(const QByteArray &item, const QByteArray &folder, NameRule rule,
                  GCancellable *cancellable)
{
    const QByteArray hidden = folder + '/' + hiddenName();
    TreeCopy tree(item, hidden, cancellable);
    try {
        tree.copy();
        placeItem(hidden, folder + '/' + fileName(item), rule);
    } catch (...) {
        discard(hidden);
        throw;
    }
    return tree;
}

} // namespace

void makeFolders(const QByteArray &path)
{
    fs::create_directories(path.constData());
}

void copyItem(const QByteArray &item, const QByteArray &folder, NameRule rule,
              GCancellable *cancellable)
{
    checkTransfer(item, folder);
    copyInto(item, folder, rule, cancellable);
}

void moveItem(const QByteArray &item, const QByteArray &folder, NameRule rule,
              GCancellable *cancellable)
{
    checkTransfer(item, folder);
    try {
        placeItem(item, folder + '/' + fileName(item), rule);
    } catch (const FileFailure &failure) {
        if (failure.code != EXDEV) {
            throw;
        }
        // What cannot be taken away from where it is would end up in both places.
        if (faccessat(AT_FDCWD, parentFolder(item).constData(), W_OK, AT_EACCESS) != 0) {
            throw FileFailure(item, errno);
        }
        copyInto(item, folder, rule, cancellable).removeSource();
    }
}

QByteArray placeItem(const QByteArray &item, const QByteArray &wanted, NameRule rule)
{
    const QByteArray folder = parentFolder(wanted) + '/';
    for (int attempt = 0;; ++attempt) {
        QByteArray path = folder + rule(fileName(wanted), attempt);
        const int code = renameToFree(item.constData(), path.constData());
        if (code == 0) {
            return path;
        }
        if (code != EEXIST) {
            throw FileFailure(wanted, code);
        }
    }
}

void trashItem(const QByteArray &item)
{
    g_autoptr(GError) error = nullptr;
    if (g_file_trash(localFile(item).get(), nullptr, &error) == 0) {
        throw FileFailure(item, QString::fromUtf8(error->message));
    }
}

void addArchiveItem(const QByteArray &item, ArchiveItems &items)
{
    std::error_code error;
    const auto type = fs::status(item.constData(), error).type();
    const bool isFolder = type == fs::file_type::directory;
    if (!fs::is_symlink(item.constData(), error) || (type != fs::file_type::regular && !isFolder)) {
        items.rest << fileUrl(item);
        return;
    }
    items.links << fileUrl(item);
    for (const QByteArray &name : isFolder ? namesIn(item) : std::vector<QByteArray>()) {
        items.rest << fileUrl(item + '/' + name);
    }
}

} // namespace velmora
