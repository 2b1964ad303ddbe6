#include "drop/DropActionsService.h"

#include "drop/DropActionRun.h"
#include "drop/DropConfig.h"
#include "platform/KeyValueStore.h"
#include "platform/LocalPath.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <algorithm>

namespace velmora
{

namespace
{

QString configKey()
{
    return QStringLiteral("drop_actions_config_v1");
}

QByteArray defaultBaseFolder()
{
    const QStringList desktops = QStandardPaths::standardLocations(QStandardPaths::DesktopLocation);
    return QFile::encodeName(desktops.isEmpty() ? QDir::homePath() : desktops.first());
}

/// A folder as it is stored.
QUrl folderUrl(const QByteArray &path)
{
    const QByteArray absolute =
        path.startsWith('/') ? path : QFile::encodeName(QDir::currentPath()) + '/' + path;
    const QUrl url = fileUrl(absolute);
    return fileUrl(localPath(url).value_or(absolute)); // no slash at the end
}

} // namespace

DropActionsService::DropActionsService(KeyValueStore &store, const DropRoles &roles,
                                       QObject *parent)
    : QObject(parent)
    , m_store(store)
    , m_roles(roles)
    , m_shelfFolder(fileUrl(defaultBaseFolder() + "/Velmora Shelf"))
    , m_copyFolder(fileUrl(defaultBaseFolder()))
    , m_moveFolder(m_copyFolder)
    , m_openWithMenu(roles.applications)
{
    load();
    ensureShelfFolder();
}

void DropActionsService::setDragging(bool dragging)
{
    m_isDragging = dragging;
    Q_EMIT isDraggingChanged();
}

void DropActionsService::setDraggedFiles(const QList<QUrl> &files)
{
    m_draggedFiles = files;
    Q_EMIT draggedFilesChanged();
}

void DropActionsService::setHoveredAction(std::optional<DropActionID> action)
{
    m_hoveredAction = action;
    Q_EMIT hoveredActionChanged();
}

QString DropActionsService::hoveredActionName() const
{
    return m_hoveredAction ? rawValue(*m_hoveredAction) : QString();
}

void DropActionsService::setLastStatus(const QString &status)
{
    m_lastStatus = status;
    Q_EMIT lastStatusChanged();
}

void DropActionsService::setEnabledActions(const std::vector<DropActionID> &actions)
{
    m_enabledActions.clear();
    for (const DropActionID action : actions) {
        if (std::count(m_enabledActions.begin(), m_enabledActions.end(), action) == 0) {
            m_enabledActions.push_back(action);
        }
    }
    save();
    Q_EMIT enabledActionsChanged();
}

QStringList DropActionsService::enabledActionNames() const
{
    QStringList names;
    for (const DropActionID action : m_enabledActions) {
        names << rawValue(action);
    }
    return names;
}

void DropActionsService::setEnabledActionNames(const QStringList &rawValues)
{
    std::vector<DropActionID> actions;
    for (const QString &name : rawValues) {
        if (const auto action = dropActionFromRawValue(name)) {
            actions.push_back(*action);
        }
    }
    setEnabledActions(actions);
}

void DropActionsService::setShelfFolder(const QUrl &folder)
{
    m_shelfFolder = folder;
    save();
    Q_EMIT shelfFolderChanged();
}

void DropActionsService::setCopyFolder(const QUrl &folder)
{
    m_copyFolder = folder;
    save();
    Q_EMIT copyFolderChanged();
}

void DropActionsService::setMoveFolder(const QUrl &folder)
{
    m_moveFolder = folder;
    save();
    Q_EMIT moveFolderChanged();
}

void DropActionsService::setImageConvertFormat(const QString &format)
{
    m_imageConvertFormat = format;
    save();
    Q_EMIT imageConvertFormatChanged();
}

void DropActionsService::execute(DropActionID action, const QList<QUrl> &files)
{
    if (files.isEmpty()) {
        return;
    }
    // Owned by the service, so that none outlives it; each deletes itself when it has ended.
    auto *const run = new DropActionRun(*this, m_roles, action, files);
    // In a turn of its own: whoever drops the files has something to tidy up first.
    QMetaObject::invokeMethod(run, &DropActionRun::start, Qt::QueuedConnection);
}

void DropActionsService::load()
{
    const auto data = m_store.data(configKey());
    const auto config = data ? decodeDropConfig(*data) : std::nullopt;
    if (!config) {
        return;
    }
    setEnabledActions(config->enabledActions);
    setShelfFolder(folderUrl(config->shelfFolderPath));
    setCopyFolder(folderUrl(config->copyFolderPath));
    setMoveFolder(folderUrl(config->moveFolderPath));
    setImageConvertFormat(config->imageConvertFormat);
}

void DropActionsService::save()
{
    const auto path = [](const QUrl &folder) { return localPath(folder).value_or(QByteArray()); };
    const auto data = encodeDropConfig({m_enabledActions, path(m_shelfFolder), path(m_copyFolder),
                                        path(m_moveFolder), m_imageConvertFormat});
    if (data) {
        m_store.setData(configKey(), *data);
    }
}

void DropActionsService::ensureShelfFolder()
{
    // A failure shows when something is put into the shelf.
    m_roles.files.createFolder(m_shelfFolder, [](const auto & /*error*/) {});
}

} // namespace velmora
