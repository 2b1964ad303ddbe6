#pragma once

#include "platform/linux/UniqueFd.h"
#include "platform/linux/files/FileContent.h"

#include <QByteArray>

#include <ctime>
#include <map>
#include <utility>
#include <vector>

namespace velmora
{

/// One item, a file or a whole folder, below a folder that is open.
struct ItemPlace {
    int parent;      ///< descriptor of the folder; has to stay open
    QByteArray name; ///< of the item in it
    QByteArray path; ///< of the item, for messages
};

/// Copies one item with all that is in it: permissions, times, links, extended attributes; names of
/// one file stay names of one file. Pipes, sockets and devices are made anew and never opened.
/// Works in the calling thread.
class TreeCopy
{
public:
    /// The target must not exist.
    TreeCopy(ItemPlace source, ItemPlace target, FileContent &content);

    /// Throws FileFailure, and leaves behind what it has made until then.
    void copy();

    /// Removes from the source what was copied, and only that: a file that has changed since, or
    /// has come in the meantime, stays and is a failure.
    void removeSource();

private:
    struct Folder {
        QByteArray path; ///< below the item; empty for the item itself
        struct stat info;
    };
    struct Copied {
        QByteArray path; ///< below the item; empty for the item itself
        ino_t inode;
        off_t size;
        timespec modified;
    };

    void copyFolders();
    void copyFolder(const Folder &folder);
    void finishFolders();
    void copyEntry(const ItemPlace &from, const ItemPlace &to, unsigned char type,
                   const QByteArray &path);
    [[nodiscard]] struct stat copyFile(const ItemPlace &from, const ItemPlace &to,
                                       const QByteArray &path);
    void copyOther(const ItemPlace &from, const ItemPlace &to, const struct stat &info);
    [[nodiscard]] bool linkToCopy(const struct stat &info, const ItemPlace &to);
    void removeFile(const Copied &file);
    [[nodiscard]] UniqueFd openFolder(const UniqueFd &root, const QByteArray &path) const;

    ItemPlace m_source;
    ItemPlace m_target;
    FileContent &m_content;
    UniqueFd m_sourceRoot; ///< where the item is a folder
    UniqueFd m_targetRoot;
    std::vector<Folder> m_waiting;
    std::vector<Folder> m_folders; ///< those above come before those below
    std::vector<Copied> m_files;
    /// Where files with several names were copied to, by device and inode.
    std::map<std::pair<dev_t, ino_t>, QByteArray> m_linked;
};

/// Removes an item that we have made ourselves, with all that is in it. What resists stays.
void discard(int parent, const QByteArray &name);

} // namespace velmora
