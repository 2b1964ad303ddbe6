#include "platform/linux/files/FileItems.h"

#include "platform/LocalPath.h"
#include "platform/linux/files/PartFiles.h"
#include "platform/linux/files/Placement.h"
#include "platform/linux/files/TreeCopy.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velmora
{

namespace
{

UniqueFd openFolder(const QByteArray &path)
{
    UniqueFd folder(open(path.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen()) {
        throw FileFailure(path, errno);
    }
    return folder;
}

/// An item, and the folder that it is to go into.
struct Transfer {
    Transfer(const QByteArray &item, const QByteArray &folder)
        : path(item)
        , name(fileName(item))
        , source(openFolder(parentFolder(item)))
        , target(openFolder(folder))
    {
        if (name.isEmpty() || name == "." || name == "..") {
            throw FileFailure(item, EINVAL);
        }
    }

    QByteArray path;
    QByteArray name;
    UniqueFd source; ///< the folder that the item is in
    UniqueFd target;
};

struct stat infoOf(const Transfer &transfer)
{
    struct stat info = {};
    if (fstatat(transfer.source.get(), transfer.name.constData(), &info, AT_SYMLINK_NOFOLLOW) !=
        0) {
        throw FileFailure(transfer.path, errno);
    }
    return info;
}

/// Whether the target is the item itself or lies somewhere in it: such a copy would never end.
bool leadsIntoItself(const Transfer &transfer)
{
    const struct stat item = infoOf(transfer);
    if (!S_ISDIR(item.st_mode)) {
        return false;
    }
    UniqueFd folder(openat(transfer.target.get(), ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat previous = {};
    struct stat info = {};
    while (folder.isOpen() && fstat(folder.get(), &info) == 0) {
        if (info.st_ino == item.st_ino && info.st_dev == item.st_dev) {
            return true;
        }
        if (info.st_ino == previous.st_ino && info.st_dev == previous.st_dev) {
            return false; // the root is its own parent
        }
        previous = info;
        folder = UniqueFd(openat(folder.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
    return false;
}

/// Under another name until it is complete, and gone again if it does not get that far.
TreeCopy copyInto(const Transfer &transfer, const QByteArray &temporary, const QByteArray &folder,
                  NameRule rule, FileContent &content)
{
    if (leadsIntoItself(transfer)) {
        throw FileFailure(transfer.path, QStringLiteral("A folder cannot go into itself"));
    }
    TreeCopy tree({transfer.source.get(), transfer.name, transfer.path},
                  {transfer.target.get(), temporary, folder + '/' + transfer.name}, content);
    try {
        tree.copy();
        const int result =
            place({transfer.target.get(), temporary, transfer.target.get(), transfer.name}, rule);
        if (result != 0) {
            throw FileFailure(transfer.path, result);
        }
    } catch (const FileFailure &) {
        discard(transfer.target.get(), temporary);
        throw;
    }
    return tree;
}

} // namespace

void makeFolders(const QByteArray &path)
{
    if (mkdir(path.constData(), 0777) == 0) {
        return;
    }
    if (errno == ENOENT && path.size() > 1) {
        makeFolders(parentFolder(path));
        if (mkdir(path.constData(), 0777) == 0) {
            return;
        }
    }
    const int code = errno;
    struct stat info = {};
    if (stat(path.constData(), &info) != 0 || !S_ISDIR(info.st_mode)) {
        throw FileFailure(path, code);
    }
}

void tidyFolder(const QByteArray &path)
{
    const UniqueFd folder(open(path.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (folder.isOpen()) {
        removeLeftovers(folder.get());
    }
}

void copyItem(const QByteArray &item, const QByteArray &folder, NameRule rule, FileContent &content)
{
    const Transfer transfer(item, folder);
    (void)copyInto(transfer, temporaryName(), folder, rule, content);
}

void moveItem(const QByteArray &item, const QByteArray &folder, NameRule rule, FileContent &content)
{
    const Transfer transfer(item, folder);
    const int result =
        place({transfer.source.get(), transfer.name, transfer.target.get(), transfer.name}, rule);
    if (result == 0) {
        return;
    }
    if (result != EXDEV) {
        throw FileFailure(item, result);
    }
    // What cannot be taken away from where it is would end up in both places.
    if (faccessat(transfer.source.get(), ".", W_OK, AT_EACCESS) != 0) {
        throw FileFailure(item, errno);
    }
    copyInto(transfer, temporaryName(), folder, rule, content).removeSource();
}

QByteArray freePath(const QByteArray &wanted, NameRule rule)
{
    const QByteArray folder = parentFolder(wanted);
    const QByteArray prefix = folder == "/" ? folder : folder + '/';
    for (int attempt = 0;; ++attempt) {
        QByteArray path = prefix + rule(fileName(wanted), attempt);
        struct stat info = {};
        if (lstat(path.constData(), &info) != 0) {
            return path; // an error that is more than absence comes up again when it is written
        }
    }
}

} // namespace velmora
