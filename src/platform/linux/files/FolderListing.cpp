#include "platform/linux/files/FolderListing.h"

#include "platform/linux/files/FileFailure.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>
#include <utility>

namespace velmora
{

FolderListing::FolderListing(int folderFd, QByteArray path)
    : m_path(std::move(path))
    , m_folder(fdopendir(folderFd))
{
    if (!m_folder) {
        const int code = errno;
        close(folderFd);
        throw FileFailure(m_path, code);
    }
}

std::optional<FolderListing::Entry> FolderListing::next()
{
    while (true) {
        errno = 0;
        const dirent *const entry = readdir(m_folder.get());
        if (entry == nullptr) {
            if (errno != 0) {
                throw FileFailure(m_path, errno);
            }
            return std::nullopt;
        }
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            return Entry{entry->d_name, entry->d_type};
        }
    }
}

} // namespace velmora
