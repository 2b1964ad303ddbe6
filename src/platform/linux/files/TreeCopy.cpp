#include "platform/linux/files/TreeCopy.h"

#include "platform/linux/files/LocalFile.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <tuple>
#include <unistd.h>

namespace velmora
{

namespace
{

constexpr auto copyFlags =
    static_cast<GFileCopyFlags>(G_FILE_COPY_ALL_METADATA | G_FILE_COPY_NOFOLLOW_SYMLINKS);

void check(int result, const QByteArray &path)
{
    if (result != 0) {
        throw FileFailure(path, errno);
    }
}

/// Of anything but files and links, which get theirs as they are copied.
void copyAttributes(const QByteArray &from, const QByteArray &to)
{
    g_file_copy_attributes(localFile(from).get(), localFile(to).get(), copyFlags, nullptr, nullptr);
}

/// What GIO gets wrong: it sets no times of links, and none before 1970; and of another user's file
/// it takes over the bits that lend its owner's rights.
void mendAttributes(const QByteArray &path, const struct stat &info)
{
    if (!S_ISLNK(info.st_mode) && info.st_uid != geteuid()) {
        chmod(path.constData(), info.st_mode & 01777);
    }
    const std::array times{info.st_atim, info.st_mtim};
    utimensat(AT_FDCWD, path.constData(), times.data(), AT_SYMLINK_NOFOLLOW);
}

/// Anything but a folder.
void copyFile(const QByteArray &from, const QByteArray &to, const struct stat &info,
              GCancellable *cancellable)
{
    g_autoptr(GError) error = nullptr;
    if (!S_ISREG(info.st_mode) && !S_ISLNK(info.st_mode)) {
        check(mknod(to.constData(), info.st_mode, info.st_rdev), from);
        copyAttributes(from, to);
    } else if (g_file_copy(localFile(from).get(), localFile(to).get(), copyFlags, cancellable,
                           nullptr, nullptr, &error) == 0) {
        // "Error opening file “/a/b”: Permission denied": only the reason is news.
        const QString reason = QString::fromUtf8(error->message);
        throw FileFailure(from, reason.section(QStringLiteral(": "), -1));
    }
    mendAttributes(to, info);
}

/// Tells whether a file is still the one that it was, with the same content.
auto identity(const struct stat &info)
{
    return std::tuple(info.st_dev, info.st_ino, info.st_size, info.st_mtim.tv_sec,
                      info.st_mtim.tv_nsec);
}

} // namespace

TreeCopy::TreeCopy(QByteArray source, QByteArray target, GCancellable *cancellable)
    : m_source(std::move(source))
    , m_target(std::move(target))
    , m_cancellable(cancellable)
{
}

void TreeCopy::copyEntry(const QByteArray &path)
{
    const QByteArray source = m_source + path;
    const QByteArray target = m_target + path;
    struct stat info = {};
    check(lstat(source.constData(), &info), source);
    if (S_ISDIR(info.st_mode)) {
        check(mkdir(target.constData(), 0700), source);
        for (const QByteArray &name : namesIn(source)) {
            copyEntry(path + '/' + name);
        }
        // Last: filling a folder changes its times, and its permissions may forbid it.
        copyAttributes(source, target);
        mendAttributes(target, info);
    } else if (!isLinkedToCopy(target, info)) {
        copyFile(source, target, info, m_cancellable);
    }
    m_copied.push_back({path, info});
}

/// Where links are unknown or there are too many, a second copy has to do.
bool TreeCopy::isLinkedToCopy(const QByteArray &target, const struct stat &info)
{
    if (info.st_nlink == 1) {
        return false;
    }
    const auto [first, isNew] = m_linked.try_emplace({info.st_dev, info.st_ino}, target);
    return !isNew && link(first->second.constData(), target.constData()) == 0;
}

void TreeCopy::removeSource() const
{
    for (const auto &[path, before] : m_copied) {
        const QByteArray source = m_source + path;
        struct stat info = {};
        check(lstat(source.constData(), &info), source);
        if (S_ISDIR(before.st_mode)) {
            check(rmdir(source.constData()), source);
        } else if (identity(info) == identity(before)) {
            check(unlink(source.constData()), source);
        } else {
            throw FileFailure(source, QStringLiteral("It has changed while it was moved"));
        }
    }
}

std::vector<QByteArray> namesIn(const QByteArray &folder)
{
    std::vector<QByteArray> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder.constData())) {
        names.push_back(QByteArray::fromStdString(entry.path().filename().native()));
    }
    return names;
}

void discard(const QByteArray &path)
{
    // A folder may have its final permissions already. Of a link this would change the target.
    if (unlink(path.constData()) == 0 || chmod(path.constData(), 0700) != 0) {
        return;
    }
    try {
        for (const QByteArray &name : namesIn(path)) {
            discard(path + '/' + name);
        }
    } catch (const std::filesystem::filesystem_error &) {
        // What can be removed is.
    }
    rmdir(path.constData());
}

} // namespace velmora
