#include "platform/linux/desktop/SettingsFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace velmora
{

namespace
{

constexpr qint64 largestFile = 16LL * 1024 * 1024;
constexpr int mostBrokenFiles = 100;

} // namespace

SettingsFile::SettingsFile(QString path)
    : m_path(std::move(path))
{
}

std::optional<QByteArray> SettingsFile::read()
{
    const QByteArray name = QFile::encodeName(m_path);
    struct stat status = {};
    // Non-blocking: opening a pipe would wait for its writer.
    const int descriptor = ::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        const int error = errno;
        // A link that leads nowhere is somebody's set-up, not a missing file.
        if (error == ENOENT && ::lstat(name.constData(), &status) != 0)
            return QByteArray();
        fail(QStringLiteral("open"), m_path, error);
        return std::nullopt;
    }
    const auto close = qScopeGuard([descriptor] { ::close(descriptor); });
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > largestFile) {
        fail(QStringLiteral("read"), m_path, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
        return std::nullopt;
    }
    QByteArray text;
    char buffer[4096];
    while (text.size() <= largestFile) {
        const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
        if (count == 0)
            return text;
        if (count > 0) {
            text.append(buffer, count);
        } else if (errno != EINTR) {
            fail(QStringLiteral("read"), m_path, errno);
            return std::nullopt;
        }
    }
    fail(QStringLiteral("read"), m_path, EFBIG);
    return std::nullopt;
}

bool SettingsFile::keepAside()
{
    const QString present = target();
    for (int number = 1; number <= mostBrokenFiles; ++number) {
        const QString name = present + QStringLiteral(".broken-%1").arg(number);
        // A second name rather than a move: at no moment is the first one missing.
        if (::link(QFile::encodeName(present).constData(), QFile::encodeName(name).constData()) ==
            0)
            return true;
        if (errno == EEXIST)
            continue;
        // File systems without links.
        return QFile::copy(present, name) || fail(QStringLiteral("write"), name, EIO);
    }
    return fail(QStringLiteral("keep aside"), present, EEXIST);
}

bool SettingsFile::replace(const QByteArray &text)
{
    const QString present = target();
    QDir().mkpath(QFileInfo(present).path());

    // One fixed name: what a killed program leaves behind is used again instead of piling up.
    const QString name = present + QStringLiteral(".new");
    const QByteArray encoded = QFile::encodeName(name);
    const int descriptor =
        ::open(encoded.constData(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
    if (descriptor < 0)
        return fail(QStringLiteral("write"), name, errno);
    const auto close = qScopeGuard([descriptor] { ::close(descriptor); });

    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0)
        return fail(QStringLiteral("lock"), name, errno);
    // Another process may have renamed what we have opened before we got the lock.
    struct stat opened = {};
    struct stat named = {};
    if (::fstat(descriptor, &opened) != 0 || ::lstat(encoded.constData(), &named) != 0 ||
        opened.st_ino != named.st_ino || opened.st_dev != named.st_dev)
        return fail(QStringLiteral("lock"), name, EWOULDBLOCK);

    if (!writeNew(descriptor, name, text)) {
        ::unlink(encoded.constData());
        return false;
    }
    struct stat old = {};
    const QByteArray target = QFile::encodeName(present);
    if (::stat(target.constData(), &old) == 0)
        static_cast<void>(::fchmod(descriptor, old.st_mode & 07777U));
    // No fsync: it can hold up the main loop for a tenth of a second at each step of a slider. The
    // common file systems write the text before such a rename by themselves.
    if (std::rename(encoded.constData(), target.constData()) == 0)
        return true;
    const int error = errno;
    ::unlink(encoded.constData());
    return fail(QStringLiteral("write"), present, error);
}

bool SettingsFile::writeNew(int descriptor, const QString &name, const QByteArray &text)
{
    if (::ftruncate(descriptor, 0) != 0)
        return fail(QStringLiteral("write"), name, errno);
    for (qsizetype written = 0; written < text.size();) {
        const ssize_t count = ::write(descriptor, text.constData() + written,
                                      static_cast<std::size_t>(text.size() - written));
        if (count > 0)
            written += count;
        else if (count == 0 || errno != EINTR)
            return fail(QStringLiteral("write"), name, count == 0 ? ENOSPC : errno);
    }
    return true;
}

/// Where the file really lies: a link to it is kept.
QString SettingsFile::target() const
{
    const QString canonical = QFileInfo(m_path).canonicalFilePath();
    return canonical.isEmpty() ? m_path : canonical;
}

bool SettingsFile::fail(const QString &doing, const QString &name, int error)
{
    m_error = QStringLiteral("cannot %1 %2: %3")
                  .arg(doing, name, QString::fromLocal8Bit(std::strerror(error)));
    return false;
}

} // namespace velmora
