#include "platform/linux/files/GioVolumes.h"

#include "platform/LocalPath.h"

namespace velmora
{

void GioVolumes::ejectVolumeOf(const QUrl &file, Done done)
{
    const auto path = localPath(file);
    if (!path) {
        QMetaObject::invokeMethod(
            this, [done = std::move(done)] { done(false); }, Qt::QueuedConnection);
        return;
    }
    const auto local = localFile(*path);
    g_file_find_enclosing_mount_async(
        local.get(), G_PRIORITY_DEFAULT, m_calls.cancellable(), &GioCalls::callback,
        m_calls.expect([this, done = std::move(done)](GObject *source, GAsyncResult *result) {
            const GObjectPointer<GMount> mount(
                g_file_find_enclosing_mount_finish(G_FILE(source), result, nullptr));
            if (mount) {
                eject(mount.get(), done);
            } else {
                done(false); // the disk of the system is no mount in this sense
            }
        }));
}

void GioVolumes::eject(GMount *mount, const Done &done)
{
    const bool canEject = g_mount_can_eject(mount) != 0;
    if (!canEject && g_mount_can_unmount(mount) == 0) {
        return done(false);
    }
    const auto begin = canEject ? g_mount_eject_with_operation : g_mount_unmount_with_operation;
    const auto finish =
        canEject ? g_mount_eject_with_operation_finish : g_mount_unmount_with_operation_finish;
    // Without an operation to ask with: a volume that is in use stays.
    begin(mount, G_MOUNT_UNMOUNT_NONE, nullptr, m_calls.cancellable(), &GioCalls::callback,
          m_calls.expect([done, finish](GObject *source, GAsyncResult *result) {
              done(finish(G_MOUNT(source), result, nullptr) != 0);
          }));
}

} // namespace velmora
