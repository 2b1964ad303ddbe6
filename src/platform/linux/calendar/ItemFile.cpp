#include "platform/linux/calendar/ItemFile.h"

#include "platform/linux/UniqueFd.h"

#include <QFile>
#include <QSaveFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velmora
{

namespace
{

constexpr qint64 largestFile = 16LL * 1024 * 1024;
constexpr int mostAttempts = 5;

/// Leaves the file to be committed. Unbuffered: what a full disk cuts short is seen at once.
[[nodiscard]] bool write(QSaveFile &file, const QByteArray &text)
{
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
           file.write(text) == text.size();
}

} // namespace

std::optional<QByteArray> readFile(const std::string &path)
{
    // Non-blocking: opening a pipe would wait for its writer.
    const UniqueFd descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status = {};
    QFile file;
    if (!descriptor.isOpen() || fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > largestFile ||
        !file.open(descriptor.get(), QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return std::nullopt;
    }
    const QByteArray text = file.read(status.st_size);
    return file.error() == QFile::NoError ? std::optional(text) : std::nullopt;
}

bool writeFile(const std::string &path, const QByteArray &text)
{
    QSaveFile file(QFile::decodeName(path.c_str()));
    return write(file, text) && file.commit();
}

bool editFile(const std::string &path,
              const std::function<std::optional<QByteArray>(const QByteArray &)> &edit)
{
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const auto present = readFile(path);
        const auto text = present ? edit(*present) : std::nullopt;
        if (!text) {
            return false;
        }
        QSaveFile file(QFile::decodeName(path.c_str()));
        if (!text->isEmpty() && !write(file, *text)) {
            return false;
        }
        if (readFile(path) == present) {
            return text->isEmpty() ? unlink(path.c_str()) == 0 : file.commit();
        }
    }
    return false;
}

} // namespace velmora
