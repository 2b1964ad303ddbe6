#include "drop/DropActionRun.h"

#include "drop/FileNaming.h"
#include "platform/ChildProcesses.h"
#include "platform/ImageConverter.h"
#include "platform/LocalPath.h"
#include "platform/Sharing.h"
#include "platform/Volumes.h"

#include <algorithm>
#include <array>
#include <utility>

namespace velmora
{

namespace
{

constexpr std::array imageExtensions{"jpg", "jpeg", "png", "heic", "tiff",
                                     "tif", "bmp",  "gif", "webp"};

bool isImageName(const QByteArray &path)
{
    const QByteArray extension = pathExtension(path).toLower();
    return std::any_of(imageExtensions.begin(), imageExtensions.end(),
                       [&extension](const char *known) { return extension == known; });
}

struct TargetFormat {
    ImageEncoding encoding;
    QByteArray extension;
};

TargetFormat targetFormat(const QString &text)
{
    using enum ImageEncoding::Type;
    const QString format = text.toLower();
    if (format == QLatin1String("jpg") || format == QLatin1String("jpeg")) {
        return {{Jpeg, 0.9}, "jpg"};
    }
    if (format == QLatin1String("tiff")) {
        return {{Tiff, {}}, "tiff"};
    }
    if (format == QLatin1String("bmp")) {
        return {{Bmp, {}}, "bmp"};
    }
    return {{Png, {}}, "png"};
}

QString notLocal(const QUrl &url)
{
    return QStringLiteral("%1: not a file of this computer").arg(url.toDisplayString());
}

} // namespace

DropActionRun::DropActionRun(DropActionsService &service, const DropRoles &roles,
                             DropActionID action, QList<QUrl> files)
    : QObject(&service)
    , m_service(service)
    , m_roles(roles)
    , m_action(action)
    , m_files(std::move(files))
{
}

void DropActionRun::start()
{
    switch (m_action) {
    case DropActionID::shelf:
        return shelf();
    case DropActionID::airDrop:
        m_roles.sharing.send(m_files);
        return succeed();
    case DropActionID::zip:
        return zip();
    case DropActionID::unzip:
        return unzipNext();
    case DropActionID::imageConvert:
        return convertNext();
    case DropActionID::copy:
        return copy();
    case DropActionID::move:
        return move();
    case DropActionID::openWith:
        return openWith();
    case DropActionID::music:
        return music();
    case DropActionID::trash:
        return trash();
    case DropActionID::eject:
        return ejectNext();
    }
}

void DropActionRun::shelf()
{
    const QUrl folder = m_service.shelfFolder();
    const auto finish = orFail([this, folder] {
        m_service.setLastStatus(QStringLiteral("Saved %1 file(s) to Shelf").arg(m_files.size()));
        m_roles.applications.open(folder);
        succeed();
    });
    // Whether the folder could be made shows at the first file.
    const auto copy = guarded([this, folder, finish](const Error & /*error*/) {
        m_roles.files.copyItems(m_files, folder, uniqueURL, finish);
    });
    m_roles.files.createFolder(folder, copy);
}

void DropActionRun::zip()
{
    QList<QByteArray> paths;
    for (const QUrl &file : std::as_const(m_files)) {
        const auto path = localPath(file);
        if (!path) {
            return fail(notLocal(file));
        }
        paths << *path;
    }
    const QByteArray &first = paths.constFirst();
    const QByteArray target = paths.size() == 1 ? withoutPathExtension(first) + ".zip"
                                                : parentFolder(first) + "/Archive.zip";
    const auto pack = guarded([this, paths](const QUrl &free) {
        const QByteArray archive = localPath(free).value_or(QByteArray());
        runProcess("/usr/bin/zip", QList<QByteArray>{"-r", archive} + paths, [this, archive] {
            succeed(QStringLiteral("Zipped to %1").arg(readableName(archive)));
        });
    });
    m_roles.files.findFreeName(fileUrl(target), uniqueURL, pack);
}

void DropActionRun::unzipNext()
{
    while (m_next < m_files.size()) {
        const QByteArray archive = localPath(m_files.at(m_next++)).value_or(QByteArray());
        if (pathExtension(archive).toLower() == "zip") {
            return unzip(archive);
        }
    }
    succeed(QStringLiteral("Extracted %1 archive(s)").arg(m_files.size()));
}

void DropActionRun::unzip(const QByteArray &archive)
{
    const QByteArray folder = withoutPathExtension(archive);
    const auto unpack = orFail([this, archive, folder] {
        runProcess("/usr/bin/unzip", {"-o", unzipArgument(archive), "-d", folder},
                   [this] { unzipNext(); });
    });
    m_roles.files.createFolder(fileUrl(folder), unpack);
}

void DropActionRun::convertNext()
{
    while (m_next < m_files.size()) {
        const QUrl &file = m_files.at(m_next++);
        if (isImageName(localPath(file).value_or(QByteArray()))) {
            return convert(file);
        }
    }
    succeed(QStringLiteral("Converted %1 image(s) to .%2")
                .arg(QString::number(m_count), m_service.imageConvertFormat()));
}

void DropActionRun::convert(const QUrl &source)
{
    const auto [encoding, extension] = targetFormat(m_service.imageConvertFormat());
    const QByteArray stem = withoutPathExtension(localPath(source).value_or(QByteArray()));
    const auto next = guarded([this](const ImageOutcome &outcome) {
        if (outcome.result == ImageOutcome::Result::Failed) {
            return fail(outcome.error);
        }
        m_count += outcome.result == ImageOutcome::Result::Written ? 1 : 0;
        convertNext();
    });
    m_roles.images.convert(source, encoding, fileUrl(stem + '.' + extension), uniqueURL, next);
}

void DropActionRun::copy()
{
    const auto finish =
        orFail([this] { succeed(QStringLiteral("Copied %1 file(s)").arg(m_files.size())); });
    m_roles.files.copyItems(m_files, m_service.copyFolder(), uniqueURL, finish);
}

void DropActionRun::move()
{
    const auto finish =
        orFail([this] { succeed(QStringLiteral("Moved %1 file(s)").arg(m_files.size())); });
    m_roles.files.moveItems(m_files, m_service.moveFolder(), uniqueURL, finish);
}

void DropActionRun::openWith()
{
    const auto offer = guarded([this](const QList<Application> &applications) {
        if (applications.isEmpty()) {
            m_roles.applications.open(m_files.constFirst());
            return succeed();
        }
        // The summary comes when the menu has closed, whatever was chosen.
        m_service.openWithMenu()->popUp(applications, m_files, guarded([this] { succeed(); }));
    });
    m_roles.applications.findForFile(m_files.constFirst(), offer);
}

void DropActionRun::music()
{
    const auto play = guarded([this](const std::optional<Application> &player) {
        if (player) {
            m_roles.applications.open(m_files, *player);
            return succeed(QStringLiteral("Added %1 file(s) to Music").arg(m_files.size()));
        }
        for (const QUrl &file : std::as_const(m_files)) {
            m_roles.applications.open(file);
        }
        succeed();
    });
    m_roles.applications.findByIdentifier(QStringLiteral("com.apple.Music"), play);
}

void DropActionRun::trash()
{
    const auto finish = orFail(
        [this] { succeed(QStringLiteral("Moved %1 file(s) to Trash").arg(m_files.size())); });
    m_roles.files.trashItems(m_files, finish);
}

void DropActionRun::ejectNext()
{
    if (m_next == m_files.size()) {
        return succeed(m_count > 0 ? QStringLiteral("Ejected %1 volume(s)").arg(m_count)
                                   : QStringLiteral("Nothing to eject"));
    }
    const auto next = guarded([this](bool ejected) {
        m_count += ejected ? 1 : 0;
        ejectNext();
    });
    m_roles.volumes.ejectVolumeOf(m_files.at(m_next++), next);
}

void DropActionRun::runProcess(const QByteArray &executable, const QList<QByteArray> &arguments,
                               std::function<void()> next)
{
    const auto ended = guarded([this, next = std::move(next)](const ProcessOutcome &outcome) {
        if (!outcome.launchError.isEmpty()) {
            return fail(outcome.launchError);
        }
        if (outcome.status != 0) {
            return fail(QStringLiteral("Process exited %1").arg(outcome.status));
        }
        next();
    });
    m_roles.processes.run(executable, arguments, ended);
}

FileActions::Done DropActionRun::orFail(std::function<void()> next)
{
    return guarded([this, next = std::move(next)](const Error &error) {
        if (error) {
            return fail(*error);
        }
        next();
    });
}

void DropActionRun::succeed(const QString &message)
{
    if (!message.isEmpty()) {
        m_service.setLastStatus(message);
    }
    m_service.setLastStatus(label(m_action) + QStringLiteral(" \u2014 done"));
    deleteLater();
}

void DropActionRun::fail(const QString &error)
{
    m_service.setLastStatus(label(m_action) + QStringLiteral(" failed: ") + error);
    deleteLater();
}

} // namespace velmora
