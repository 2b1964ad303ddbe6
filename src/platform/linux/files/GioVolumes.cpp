#include "platform/linux/files/GioVolumes.h"

#include "platform/LocalPath.h"
#include "platform/linux/files/LocalFile.h"

#include <QLoggingCategory>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcVolumes, "com.velmora.app.Volumes", QtInfoMsg)

/// Tells what came out of a call, and says why where it failed.
bool succeeded(gboolean result, GError *error)
{
    const GErrorPointer owned(error);
    if (owned) {
        qCDebug(lcVolumes) << "Not ejected:" << owned->message;
    }
    return result != 0;
}

} // namespace

void GioVolumes::ejectVolumeOf(const QUrl &file, Done done)
{
    const auto path = localPath(file);
    if (!path) {
        return refuse(std::move(done));
    }
    const auto local = localFile(*path);
    g_file_find_enclosing_mount_async(
        local.get(), G_PRIORITY_DEFAULT, m_calls.cancellable(), &GioCalls::callback,
        m_calls.expect([this, done = std::move(done)](GObject *source, GAsyncResult *result) {
            GError *error = nullptr;
            const GObjectPointer<GMount> mount(
                g_file_find_enclosing_mount_finish(G_FILE(source), result, &error));
            if (succeeded(mount != nullptr, error)) {
                eject(mount.get(), done);
            } else {
                done(false); // the disk of the system is no mount in this sense
            }
        }));
}

void GioVolumes::eject(GMount *mount, Done done)
{
    // Without an operation to ask with: a volume that is in use stays.
    if (g_mount_can_eject(mount) != 0) {
        g_mount_eject_with_operation(
            mount, G_MOUNT_UNMOUNT_NONE, nullptr, m_calls.cancellable(), &GioCalls::callback,
            m_calls.expect([done = std::move(done)](GObject *source, GAsyncResult *result) {
                GError *error = nullptr;
                done(succeeded(g_mount_eject_with_operation_finish(G_MOUNT(source), result, &error),
                               error));
            }));
    } else if (g_mount_can_unmount(mount) != 0) {
        g_mount_unmount_with_operation(
            mount, G_MOUNT_UNMOUNT_NONE, nullptr, m_calls.cancellable(), &GioCalls::callback,
            m_calls.expect([done = std::move(done)](GObject *source, GAsyncResult *result) {
                GError *error = nullptr;
                done(succeeded(
                    g_mount_unmount_with_operation_finish(G_MOUNT(source), result, &error), error));
            }));
    } else {
        refuse(std::move(done));
    }
}

void GioVolumes::refuse(Done done)
{
    QMetaObject::invokeMethod(
        this, [done = std::move(done)] { done(false); }, Qt::QueuedConnection);
}

} // namespace velmora
