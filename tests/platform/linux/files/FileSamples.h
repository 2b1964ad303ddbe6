#pragma once

#include <QByteArray>
#include <QCryptographicHash>
#include <QEventLoop>
#include <QString>

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

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
    QList<QByteArray> names;
    const std::unique_ptr<DIR, int (*)(DIR *)> dir(opendir(folder.constData()), closedir);
    while (const dirent *entry = dir ? readdir(dir.get()) : nullptr) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..") {
            names << name;
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// All that a copy has to keep, one line for each entry of a tree.
inline QList<QByteArray> describe(const QByteArray &path, const QByteArray &name = ".",
                                  std::map<ino_t, QByteArray> *links = nullptr)
{
    std::map<ino_t, QByteArray> own;
    links = links == nullptr ? &own : links;
    struct stat info = {};
    if (lstat(path.constData(), &info) != 0) {
        return {name + " is missing"};
    }
    QByteArray line = name + ' ' + QByteArray::number(info.st_mode, 8) + ' ' +
                      QByteArray::number(info.st_uid) + ' ' +
                      QByteArray::number(qint64{info.st_mtim.tv_sec}) + '.' +
                      QByteArray::number(qint64{info.st_mtim.tv_nsec});
    if (S_ISLNK(info.st_mode)) {
        char target[4096] = {};
        line += " -> " + QByteArray(target, readlink(path.constData(), target, sizeof target));
    }
    if (S_ISREG(info.st_mode)) {
        line += ' ' + QByteArray::number(qint64{info.st_size}) + ' ' +
                QCryptographicHash::hash(readFile(path), QCryptographicHash::Md5).toHex() +
                " first name: " + links->try_emplace(info.st_ino, name).first->second;
    }
    char value[256] = {};
    const ssize_t size = lgetxattr(path.constData(), "user.velmora", value, sizeof value);
    line += size > 0 ? " [" + QByteArray(value, size) + ']' : QByteArray();
    QList<QByteArray> lines{line};
    if (S_ISDIR(info.st_mode)) {
        for (const QByteArray &entry : entries(path)) {
            lines += describe(path + '/' + entry, name + '/' + entry, links);
        }
    }
    return lines;
}

inline void setTime(const QByteArray &path, time_t seconds, long nanoseconds)
{
    const timespec times[] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
    utimensat(AT_FDCWD, path.constData(), times, AT_SYMLINK_NOFOLLOW);
}

/// A folder with one of each kind of thing.
inline void makeTree(const QByteArray &root)
{
    const auto folder = [](const QByteArray &path) { mkdir(path.constData(), 0755); };
    folder(root);
    folder(root + "/empty");
    folder(root + "/read only");
    folder(root + "/read only/deeper");
    writeFile(root + "/read only/deeper/file", "x");
    writeFile(root + "/nothing", "");
    writeFile(root + "/program", QByteArray(300'000, 'p'));
    writeFile(root + "/-rf *?[a]\n'\"\\", "odd");
    writeFile(root + "/\xFF\xC3(", "no text");
    writeFile(root + '/' + QByteArray(255, 'n'), "long");
    writeFile(root + "/two names", "linked");
    link((root + "/two names").constData(), (root + "/read only/other name").constData());
    symlink("/no/such/file", (root + "/dangling").constData());
    symlink("../..", (root + "/read only/up").constData());
    mkfifo((root + "/pipe").constData(), 0620);
    setxattr((root + "/program").constData(), "user.velmora", "tag", 3, 0);
    setxattr((root + "/empty").constData(), "user.velmora", "folder", 6, 0);
    chmod((root + "/program").constData(), 0751);
    chmod((root + "/two names").constData(), 0400);
    setTime(root + "/program", 1'000'000'000, 123'456'789);
    setTime(root + "/dangling", 1'000'000'001, 5);
    setTime(root + "/read only/deeper", -5, 0); // before 1970
    chmod((root + "/read only").constData(), 0555);
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

/// Takes root's rights away while it lives, so that permissions mean something.
class Unprivileged
{
public:
    Unprivileged()
    {
        if (geteuid() == 0) {
            m_isRoot = setegid(65534) == 0 && seteuid(65534) == 0;
        }
    }
    Unprivileged(const Unprivileged &) = delete;
    Unprivileged &operator=(const Unprivileged &) = delete;
    ~Unprivileged()
    {
        if (m_isRoot && (seteuid(0) != 0 || setegid(0) != 0)) {
            std::abort();
        }
    }

private:
    bool m_isRoot = false;
};

} // namespace velmora
