#pragma once

#include "platform/linux/files/TreeCopy.h"

#include <QByteArray>
#include <QEventLoop>

#include <algorithm>
#include <fstream>
#include <optional>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace velmora
{

// Files for tests, by paths of bytes. The standard library takes those as they are.

inline void writeFile(const QByteArray &path, const QByteArray &content = "content")
{
    std::ofstream(path.toStdString(), std::ios::binary).write(content.constData(), content.size());
}

inline QByteArray readFile(const QByteArray &path)
{
    std::stringstream content;
    content << std::ifstream(path.toStdString(), std::ios::binary).rdbuf();
    return QByteArray::fromStdString(content.str());
}

inline bool isThere(const QByteArray &path)
{
    struct stat info = {};
    return lstat(path.constData(), &info) == 0;
}

/// Names in a folder, sorted, hidden ones too.
inline QList<QByteArray> entries(const QByteArray &folder)
{
    const auto names = namesIn(folder);
    QList<QByteArray> sorted(names.begin(), names.end());
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

/// What a call answers later by way of the callback that it is given.
template<typename Result, typename Call>
Result answerOf(Call call)
{
    QEventLoop loop;
    std::optional<Result> answer;
    call([&](const Result &result) {
        answer = result;
        loop.quit();
    });
    if (answer) {
        qFatal("answered inside the call");
    }
    loop.exec();
    return *answer;
}

/// A folder of its own on another file system than the given path; empty if there is none.
inline QByteArray folderElsewhere(const QByteArray &path)
{
    struct stat here = {};
    struct stat there = {};
    QByteArray folder("/dev/shm/velmora-test-XXXXXX");
    if (stat(path.constData(), &here) != 0 || stat("/dev/shm", &there) != 0 ||
        here.st_dev == there.st_dev || mkdtemp(folder.data()) == nullptr) {
        return {};
    }
    return folder;
}

} // namespace velmora
