#include "platform/linux/files/Placement.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velmora
{

namespace
{

/// For file systems that cannot rename without replacing, such as NFS. A second name is as safe;
/// where there are none, looking first has to do.
int renameByLink(const Placing &placing, const QByteArray &name)
{
    const char *const from = placing.fromName.constData();
    const char *const to = name.constData();
    if (linkat(placing.fromFolder, from, placing.toFolder, to, 0) == 0) {
        if (unlinkat(placing.fromFolder, from, 0) == 0) {
            return 0;
        }
        const int code = errno;
        unlinkat(placing.toFolder, to, 0);
        return code;
    }
    if (errno == EEXIST || errno == EXDEV) {
        return errno;
    }
    struct stat info = {};
    if (fstatat(placing.toFolder, to, &info, AT_SYMLINK_NOFOLLOW) == 0) {
        return EEXIST;
    }
    if (errno != ENOENT) {
        return errno;
    }
    return renameat(placing.fromFolder, from, placing.toFolder, to) == 0 ? 0 : errno;
}

int renameToFree(const Placing &placing, const QByteArray &name)
{
    if (renameat2(placing.fromFolder, placing.fromName.constData(), placing.toFolder,
                  name.constData(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    // EINVAL also means a folder that would go into itself: it comes out again further down.
    return errno == EINVAL || errno == ENOSYS ? renameByLink(placing, name) : errno;
}

} // namespace

int place(const Placing &placing, NameRule rule)
{
    int result = EEXIST;
    for (int attempt = 0; result == EEXIST; ++attempt) {
        result = renameToFree(placing, rule(placing.wantedName, attempt));
    }
    return result;
}

} // namespace velmora
