#include "platform/linux/files/TreeCopy.h"

#include "platform/linux/files/FileAttributes.h"
#include "platform/linux/files/FolderListing.h"

#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>

namespace velmora
{

namespace
{

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
// A file that became a pipe behind our back must not hold us up, nor a terminal become ours.
constexpr int sourceFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr int targetFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
constexpr mode_t ownFile = 0600; // until it is complete
constexpr mode_t ownFolder = 0700;

QByteArray below(const QByteArray &folder, const QByteArray &name)
{
    return folder.isEmpty() ? name : folder + '/' + name;
}

/// `info` of an entry, itself rather than what it points to.
struct stat entryInfo(const ItemPlace &place)
{
    struct stat info = {};
    if (fstatat(place.parent, place.name.constData(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
        throw FileFailure(place.path, errno);
    }
    return info;
}

QByteArray linkTarget(const ItemPlace &place)
{
    std::array<char, PATH_MAX + 1> target{};
    const ssize_t length =
        readlinkat(place.parent, place.name.constData(), target.data(), target.size());
    if (length < 0) {
        throw FileFailure(place.path, errno);
    }
    return {target.data(), length};
}

bool isSameTime(const timespec &a, const timespec &b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

} // namespace

TreeCopy::TreeCopy(ItemPlace source, ItemPlace target, FileContent &content)
    : m_source(std::move(source))
    , m_target(std::move(target))
    , m_content(content)
{
}

void TreeCopy::copy()
{
    const struct stat info = entryInfo(m_source);
    if (!S_ISDIR(info.st_mode)) {
        copyEntry(m_source, m_target, IFTODT(info.st_mode), {});
        return;
    }
    m_sourceRoot = UniqueFd(openat(m_source.parent, m_source.name.constData(), folderFlags));
    if (!m_sourceRoot.isOpen()) {
        throw FileFailure(m_source.path, errno);
    }
    if (mkdirat(m_target.parent, m_target.name.constData(), ownFolder) != 0) {
        throw FileFailure(m_target.path, errno);
    }
    m_targetRoot = UniqueFd(openat(m_target.parent, m_target.name.constData(), folderFlags));
    if (!m_targetRoot.isOpen()) {
        throw FileFailure(m_target.path, errno);
    }
    m_waiting.push_back({{}, info});
    copyFolders();
    finishFolders();
}

void TreeCopy::copyFolders()
{
    // A list instead of recursion: neither the depth of a tree nor the number of open files limits.
    while (!m_waiting.empty()) {
        m_folders.push_back(std::move(m_waiting.back()));
        m_waiting.pop_back();
        copyFolder(Folder(m_folders.back()));
    }
}

void TreeCopy::copyFolder(const Folder &folder)
{
    UniqueFd sourceFd = openFolder(m_sourceRoot, folder.path);
    const UniqueFd targetFd = openFolder(m_targetRoot, folder.path);
    const QByteArray source = below(m_source.path, folder.path);
    const QByteArray target = below(m_target.path, folder.path);
    FolderListing listing(sourceFd.release(), source);
    while (const auto entry = listing.next()) {
        const QByteArray name(entry->name);
        const ItemPlace from{listing.fd(), name, below(source, name)};
        const ItemPlace to{targetFd.get(), name, below(target, name)};
        unsigned char type = entry->type;
        if (type == DT_UNKNOWN || type == DT_DIR) {
            const struct stat info = entryInfo(from);
            type = IFTODT(info.st_mode);
            if (type == DT_DIR) {
                if (mkdirat(to.parent, name.constData(), ownFolder) != 0) {
                    throw FileFailure(to.path, errno);
                }
                m_waiting.push_back({below(folder.path, name), info});
                continue;
            }
        }
        copyEntry(from, to, type, below(folder.path, name));
    }
}

/// Times and permissions last: filling a folder changes the one, and the other may forbid it.
void TreeCopy::finishFolders()
{
    // NOLINTNEXTLINE(modernize-loop-convert): clang 14 cannot read the library's reversed views
    for (auto folder = m_folders.crbegin(); folder != m_folders.crend(); ++folder) {
        const UniqueFd sourceFd = openFolder(m_sourceRoot, folder->path);
        const UniqueFd targetFd = openFolder(m_targetRoot, folder->path);
        copyAttributes(sourceFd.get(), targetFd.get(), folder->info);
    }
}

void TreeCopy::copyEntry(const ItemPlace &from, const ItemPlace &to, unsigned char type,
                         const QByteArray &path)
{
    struct stat info = {};
    if (type == DT_REG) {
        info = copyFile(from, to, path);
    } else {
        info = entryInfo(from);
        copyOther(from, to, info);
    }
    m_files.push_back({path, info.st_ino, info.st_size, info.st_mtim});
}

/// Returns what the source was before it was read.
struct stat TreeCopy::copyFile(const ItemPlace &from, const ItemPlace &to, const QByteArray &path)
{
    const UniqueFd source(openat(from.parent, from.name.constData(), sourceFlags));
    struct stat info = {};
    if (!source.isOpen() || fstat(source.get(), &info) != 0) {
        throw FileFailure(from.path, errno);
    }
    if (!S_ISREG(info.st_mode)) {
        throw FileFailure(from.path, EBUSY); // it was another a moment ago
    }
    if (info.st_nlink > 1 && linkToCopy(info, to)) {
        return info;
    }
    const UniqueFd target(openat(to.parent, to.name.constData(), targetFlags, ownFile));
    if (!target.isOpen()) {
        throw FileFailure(to.path, errno);
    }
    m_content.copy(source.get(), target.get(), info, from.path);
    copyAttributes(source.get(), target.get(), info);
    if (info.st_nlink > 1 && m_targetRoot.isOpen()) {
        m_linked.emplace(std::pair(info.st_dev, info.st_ino), path);
    }
    return info;
}

bool TreeCopy::linkToCopy(const struct stat &info, const ItemPlace &to)
{
    const auto found = m_linked.find({info.st_dev, info.st_ino});
    // Where links are unknown or there are too many, a second copy has to do.
    return found != m_linked.end() && linkat(m_targetRoot.get(), found->second.constData(),
                                             to.parent, to.name.constData(), 0) == 0;
}

void TreeCopy::copyOther(const ItemPlace &from, const ItemPlace &to, const struct stat &info)
{
    const int result = S_ISLNK(info.st_mode)
                           ? symlinkat(linkTarget(from).constData(), to.parent, to.name.constData())
                           : mknodat(to.parent, to.name.constData(), info.st_mode, info.st_rdev);
    if (result != 0) {
        throw FileFailure(from.path, errno);
    }
    copyEntryAttributes(to.parent, to.name.constData(), info);
}

void TreeCopy::removeSource()
{
    for (const Copied &file : m_files) {
        removeFile(file);
    }
    // NOLINTNEXTLINE(modernize-loop-convert): clang 14 cannot read the library's reversed views
    for (auto folder = m_folders.crbegin(); folder != m_folders.crend(); ++folder) {
        const bool isItem = folder->path.isEmpty();
        const int parent = isItem ? m_source.parent : m_sourceRoot.get();
        const QByteArray &path = isItem ? m_source.name : folder->path;
        if (unlinkat(parent, path.constData(), AT_REMOVEDIR) != 0) {
            throw FileFailure(below(m_source.path, folder->path), errno);
        }
    }
}

void TreeCopy::removeFile(const Copied &file)
{
    const bool isItem = file.path.isEmpty();
    const ItemPlace place{isItem ? m_source.parent : m_sourceRoot.get(),
                          isItem ? m_source.name : file.path,
                          isItem ? m_source.path : below(m_source.path, file.path)};
    const struct stat info = entryInfo(place);
    if (info.st_ino != file.inode || info.st_size != file.size ||
        !isSameTime(info.st_mtim, file.modified)) {
        throw FileFailure(place.path, QStringLiteral("It has changed while it was moved"));
    }
    if (unlinkat(place.parent, place.name.constData(), 0) != 0) {
        throw FileFailure(place.path, errno);
    }
}

UniqueFd TreeCopy::openFolder(const UniqueFd &root, const QByteArray &path) const
{
    UniqueFd folder(openat(root.get(), path.isEmpty() ? "." : path.constData(), folderFlags));
    if (!folder.isOpen()) {
        throw FileFailure(below(m_source.path, path), errno);
    }
    return folder;
}

} // namespace velmora
