#pragma once

#include "platform/linux/GObjectPointer.h"

#include <QByteArray>

#include <gio/gio.h>

namespace velmora
{

/// GIO's file system of local files alone. With a reference of our own: that of GLib is given back
/// by gvfs, which does not own it, where gvfs is installed but its daemon cannot be reached. So
/// this is first called before anybody asks for the whole of the virtual file system.
inline GVfs *localFiles()
{
    static GVfs *const local = G_VFS(g_object_ref(g_vfs_get_local()));
    return local;
}

/// A file as GIO sees it, by way of the local files alone: the others would bring a whole virtual
/// file system along, which talks to the session bus and waits for it. Any thread.
[[nodiscard]] inline GObjectPointer<GFile> localFile(const QByteArray &path)
{
    return GObjectPointer<GFile>(g_vfs_get_file_for_path(localFiles(), path.constData()));
}

} // namespace velmora
