#include "drop/DropActionRun.h"

#include "drop/FileNaming.h"
#include "platform/ImageConverter.h"
#include "platform/LocalPath.h"
#include "platform/Sharing.h"
#include "platform/Volumes.h"

#include <QHash>

#include <utility>

namespace velmora
{

namespace
{

bool isImageName(const QByteArray &path)
{
    static const QList<QByteArray> extensions{"jpg", "jpeg", "png", "heic", "tiff",
                                              "tif", "bmp",  "gif", "webp"};
    return extensions.contains(pathExtension(path).toLower());
}

struct TargetFormat {
    ImageEncoding encoding;
    QByteArray extension;
};

TargetFormat targetFormat(const QString &text)
{
    static const QHash<QString, TargetFormat> formats{
        {QStringLiteral("jpg"), {{"jpeg", 0.9}, "jpg"}},
        {QStringLiteral("jpeg"), {{"jpeg", 0.9}, "jpg"}},
        {QStringLiteral("tiff"), {{"tiff", {}}, "tiff"}},
        {QStringLiteral("bmp"), {{"bmp", {}}, "bmp"}}};
    return formats.value(text.toLower(), {{"png", {}}, "png"});
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
        return m_roles.files.copyItems(m_files, m_service.copyFolder(), uniqueURL,
                                       finished(QStringLiteral("Copied %1 file(s)")));
    case DropActionID::move:
        return m_roles.files.moveItems(m_files, m_service.moveFolder(), uniqueURL,
                                       finished(QStringLiteral("Moved %1 file(s)")));
    case DropActionID::openWith:
        return openWith();
    case DropActionID::music:
        return music();
    case DropActionID::trash:
        return m_roles.files.trashItems(m_files,
                                        finished(QStringLiteral("Moved %1 file(s) to Trash")));
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
    const auto pack = guarded([this](const Error &error, const ArchiveItems &items) {
        if (error) {
            return fail(*error);
        }
        const QByteArray first = localPath(m_files.constFirst()).value_or(QByteArray());
        const QByteArray folder = parentFolder(first);
        m_target = fileUrl(m_files.size() == 1 ? withoutPathExtension(first) + ".zip"
                                               : folder + "/Archive.zip");
        m_unfinished = folder + '/' + hiddenName();
        // Only links that were dropped are followed: others may lead round in circles.
        runZip({}, items.links,
               [this, rest = items.rest] { runZip({"-ry"}, rest, [this] { placeArchive(); }); });
    });
    m_roles.files.findLinks(m_files, pack);
}

void DropActionRun::runZip(const QList<QByteArray> &options, const QList<QUrl> &files,
                           std::function<void()> next)
{
    if (files.isEmpty()) {
        return next();
    }
    Command command{"/usr/bin/zip", options + QList<QByteArray>{m_unfinished, "-@"}, {}, false};
    for (const QUrl &file : files) {
        // A line each, of which there can be any number; two characters end a line.
        const QByteArray path = localPath(file).value_or(QByteArray());
        if (path.contains('\n') || path.contains('\r')) {
            command.arguments << path;
        } else {
            command.input += path + '\n';
        }
    }
    runProcess(command, std::move(next));
}

void DropActionRun::placeArchive()
{
    const auto finish = guarded([this](const Error &error, const QUrl &archive) {
        if (error) {
            return fail(*error);
        }
        const QByteArray path = localPath(archive).value_or(QByteArray());
        succeed(QStringLiteral("Zipped to %1").arg(readableName(path)));
    });
    m_roles.files.placeItem(fileUrl(m_unfinished), m_target, uniqueURL, finish);
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
        runProcess({"/usr/bin/unzip", {"-o", unzipArgument(archive), "-d", folder}, {}},
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

void DropActionRun::runProcess(const Command &command, std::function<void()> next)
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
    m_roles.processes.run(command, ended);
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

FileActions::Done DropActionRun::finished(const QString &message)
{
    return orFail([this, message] { succeed(message.arg(m_files.size())); });
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
    if (!m_unfinished.isEmpty()) {
        m_roles.files.discardItem(fileUrl(m_unfinished));
    }
    m_service.setLastStatus(label(m_action) + QStringLiteral(" failed: ") + error);
    deleteLater();
}

} // namespace velmora
