#pragma once

#include <QByteArray>

#include <dirent.h>
#include <memory>
#include <optional>

namespace velmora
{

/// The entries of an open folder, in the order of the file system.
class FolderListing
{
public:
    struct Entry {
        const char *name;   ///< valid until the next call
        unsigned char type; ///< DT_REG and so on; DT_UNKNOWN where the file system does not tell
    };

    /// Takes over the descriptor of a folder. Throws FileFailure; `path` is for its message.
    FolderListing(int folderFd, QByteArray path);

    /// Neither "." nor ".."; nothing at the end. Throws FileFailure.
    [[nodiscard]] std::optional<Entry> next();

    [[nodiscard]] int fd() const { return dirfd(m_folder.get()); }

private:
    struct Closer {
        void operator()(DIR *folder) const { closedir(folder); }
    };

    QByteArray m_path;
    std::unique_ptr<DIR, Closer> m_folder;
};

} // namespace velmora
