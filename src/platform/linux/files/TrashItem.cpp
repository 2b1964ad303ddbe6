#include "platform/LocalPath.h"
#include "platform/linux/files/FileItems.h"
#include "platform/linux/files/LocalFile.h"

namespace velmora
{

void trashItem(const QByteArray &item)
{
    const auto file = localFile(item);
    GError *error = nullptr;
    if (g_file_trash(file.get(), nullptr, &error) == 0) {
        const GErrorPointer owned(error);
        throw FileFailure(item, owned ? QString::fromUtf8(owned->message)
                                      : QStringLiteral("It cannot be thrown away"));
    }
}

} // namespace velmora
