#include "platform/LocalPath.h"
#include "platform/linux/files/FileItems.h"
#include "platform/linux/files/GObjectPointer.h"

namespace velmora
{

void trashItem(const QByteArray &item)
{
    // The local files only: the others would bring a whole virtual file system into the process.
    const GObjectPointer<GFile> file(g_vfs_get_file_for_path(g_vfs_get_local(), item.constData()));
    GError *error = nullptr;
    if (g_file_trash(file.get(), nullptr, &error) == 0) {
        const GErrorPointer owned(error);
        throw FileFailure(item, QString::fromUtf8(error->message));
    }
}

} // namespace velmora
