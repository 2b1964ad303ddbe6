#include "platform/linux/files/GioApplications.h"

#include "platform/LocalPath.h"

#include <QLoggingCategory>

#include <gio/gdesktopappinfo.h>
#include <utility>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcApplications, "com.velmora.app.Applications", QtInfoMsg)

Application describe(GAppInfo *info)
{
    GIcon *const icon = g_app_info_get_icon(info);
    g_autofree char *iconName = icon != nullptr ? g_icon_to_string(icon) : nullptr;
    return {QString::fromUtf8(g_app_info_get_id(info)),
            QString::fromUtf8(g_app_info_get_display_name(info)), QString::fromUtf8(iconName)};
}

/// Looked up by content where the name does not tell. Empty for a file that cannot be read.
QByteArray contentType(const QByteArray &path)
{
    const auto file = localFile(path);
    const GObjectPointer<GFileInfo> info(
        g_file_query_info(file.get(), G_FILE_ATTRIBUTE_STANDARD_CONTENT_TYPE,
                          G_FILE_QUERY_INFO_NONE, nullptr, nullptr));
    return info ? QByteArray(g_file_info_get_content_type(info.get())) : QByteArray();
}

/// In the order of the desktop: the user's choice comes first.
QList<Application> applicationsFor(const QByteArray &path)
{
    QList<Application> applications;
    g_autolist(GAppInfo) list = g_app_info_get_all_for_type(contentType(path).constData());
    for (const GList *entry = list; entry != nullptr; entry = entry->next) {
        auto *const info = G_APP_INFO(entry->data);
        const Application application = describe(info);
        // What has no identifier cannot be found again.
        if (!application.id.isEmpty() && !applications.contains(application)) {
            applications << application;
        }
    }
    return applications;
}

/// A new reference, or null.
GAppInfo *defaultFor(const QUrl &url)
{
    const auto path = localPath(url);
    if (!path) {
        const QByteArray scheme = url.scheme().toLatin1();
        return scheme.isEmpty() ? nullptr
                                : g_app_info_get_default_for_uri_scheme(scheme.constData());
    }
    return g_app_info_get_default_for_type(contentType(*path).constData(), FALSE);
}

} // namespace

GioApplications::GioApplications(std::vector<QByteArray> ownVariables)
    : m_ownVariables(std::move(ownVariables))
    , m_worker(1)
{
    localFiles();
}

void GioApplications::open(const QUrl &url)
{
    openIn([url] { return defaultFor(url); }, {url});
}

void GioApplications::open(const QList<QUrl> &files, const Application &application)
{
    openIn(
        [id = application.id.toUtf8()] {
            GDesktopAppInfo *const info = g_desktop_app_info_new(id.constData());
            return info != nullptr ? G_APP_INFO(info) : nullptr;
        },
        files);
}

template<typename Find>
void GioApplications::openIn(Find find, const QList<QUrl> &urls)
{
    m_worker.run(
        [find = std::move(find)] {
            // Launching turns URLs into paths by way of the virtual file system, which talks to the
            // session bus when it is made, and waits. Here that holds nobody up.
            g_vfs_get_default();
            return GObjectPointer<GAppInfo>(find());
        },
        [this, urls](const GObjectPointer<GAppInfo> &info) {
            if (info) {
                launch(info.get(), urls);
            } else {
                qCInfo(lcApplications) << "No application to open" << urls.first();
            }
        });
}

void GioApplications::findForFile(const QUrl &file,
                                  std::function<void(const QList<Application> &)> done)
{
    m_worker.run(
        [file] {
            const auto path = localPath(file);
            return path ? applicationsFor(*path) : QList<Application>();
        },
        std::move(done));
}

void GioApplications::findByIdentifier(const QString &identifier,
                                       std::function<void(const std::optional<Application> &)> done)
{
    m_worker.run(
        [identifier]() -> std::optional<Application> {
            if (identifier != QLatin1String("com.apple.Music")) {
                return std::nullopt;
            }
            // On this desktop nobody is "the" music player: whom the user has play music is.
            const GObjectPointer<GAppInfo> info(
                g_app_info_get_default_for_type("audio/mpeg", FALSE));
            return info ? std::optional(describe(info.get())) : std::nullopt;
        },
        std::move(done));
}

void GioApplications::launch(GAppInfo *application, const QList<QUrl> &urls)
{
    QList<QByteArray> encoded;
    for (const QUrl &url : urls) {
        encoded << url.toEncoded();
    }
    g_autoptr(GList) list = nullptr;
    for (QByteArray &url : encoded) {
        list = g_list_append(list, url.data());
    }
    const GObjectPointer<GAppLaunchContext> context(g_app_launch_context_new());
    for (const QByteArray &name : m_ownVariables) {
        g_app_launch_context_unsetenv(context.get(), name.constData());
    }
    g_app_info_launch_uris_async(
        application, list, context.get(), m_calls.cancellable(), &GioCalls::callback,
        m_calls.expect([](GObject *source, GAsyncResult *result) {
            g_autoptr(GError) error = nullptr;
            if (g_app_info_launch_uris_finish(G_APP_INFO(source), result, &error) == 0) {
                qCInfo(lcApplications) << "Not opened:" << error->message;
            }
        }));
}

} // namespace velmora
