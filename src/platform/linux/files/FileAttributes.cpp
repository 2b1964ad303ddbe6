#include "platform/linux/files/FileAttributes.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/types.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace velmora
{

namespace
{

constexpr std::size_t largestAttribute = 65536; // of a value and of the list of names alike

/// Of a file that became somebody else's, the bits that lend its owner's rights must not survive.
mode_t permissions(const struct stat &info, bool keptOwner)
{
    const mode_t lent = S_ISUID | S_ISGID;
    return info.st_mode & (keptOwner ? 07777 : 07777 & ~lent);
}

std::array<timespec, 2> times(const struct stat &info)
{
    return {info.st_atim, info.st_mtim};
}

void copyExtendedAttribute(int from, int to, const char *name)
{
    std::array<char, 4096> small{};
    ssize_t size = fgetxattr(from, name, small.data(), small.size());
    if (size >= 0) {
        fsetxattr(to, name, small.data(), static_cast<std::size_t>(size), 0);
        return;
    }
    if (errno != ERANGE) {
        return;
    }
    std::string large(largestAttribute, '\0');
    size = fgetxattr(from, name, large.data(), large.size());
    if (size >= 0) {
        fsetxattr(to, name, large.data(), static_cast<std::size_t>(size), 0);
    }
}

void copyExtendedAttributes(int from, int to)
{
    std::array<char, 1024> small{};
    ssize_t size = flistxattr(from, small.data(), small.size());
    std::string names(small.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
    if (size < 0 && errno == ERANGE) {
        names.resize(largestAttribute);
        size = flistxattr(from, names.data(), names.size());
        names.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    }
    // Each name ends in a zero.
    for (std::size_t start = 0; start < names.size();) {
        const char *const name = names.c_str() + start;
        copyExtendedAttribute(from, to, name);
        start += std::strlen(name) + 1;
    }
}

} // namespace

void copyAttributes(int from, int to, const struct stat &info)
{
    // The order matters: a new owner takes away rights and capabilities, and permissions may forbid
    // to write attributes.
    const bool keptOwner = fchown(to, info.st_uid, info.st_gid) == 0;
    if (!keptOwner) {
        [[maybe_unused]] const int ignored = fchown(to, static_cast<uid_t>(-1), info.st_gid);
    }
    copyExtendedAttributes(from, to);
    fchmod(to, permissions(info, keptOwner));
    futimens(to, times(info).data());
}

void copyEntryAttributes(int folder, const char *name, const struct stat &info)
{
    const bool keptOwner =
        fchownat(folder, name, info.st_uid, info.st_gid, AT_SYMLINK_NOFOLLOW) == 0;
    if (!S_ISLNK(info.st_mode)) {
        fchmodat(folder, name, permissions(info, keptOwner), 0);
    }
    utimensat(folder, name, times(info).data(), AT_SYMLINK_NOFOLLOW);
}

} // namespace velmora
