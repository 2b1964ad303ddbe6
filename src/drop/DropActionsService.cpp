#include "drop/DropActionsService.h"

#include "drop/DropActionRun.h"
#include "platform/KeyValueStore.h"
#include "platform/LocalPath.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <algorithm>
#include <iterator>

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

} // namespace

DropActionsService::DropActionsService(KeyValueStore &store, const DropRoles &roles,
                                       QObject *parent)
    : QObject(parent)
    , m_store(store)
    , m_roles(roles)
    , m_openWithMenu(roles.applications)
{
    const QByteArray folder = defaultBaseFolder();
    m_config.shelfFolder = fileUrl(folder + "/Velmora Shelf");
    m_config.copyFolder = fileUrl(folder);
    m_config.moveFolder = m_config.copyFolder;
    load();
    // A failure shows when something is put into the shelf.
    m_roles.files.createFolder(m_config.shelfFolder, [](const auto & /*error*/) {});
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

template<typename Value>
void DropActionsService::assign(Value &setting, const Value &value)
{
    setting = value;
    if (const auto data = encodeDropConfig(m_config)) {
        m_store.setData(configKey(), *data);
    }
    Q_EMIT configChanged();
}

void DropActionsService::setEnabledActions(const std::vector<DropActionID> &actions)
{
    std::vector<DropActionID> unique;
    std::copy_if(actions.begin(), actions.end(), std::back_inserter(unique),
                 [&unique](DropActionID action) {
                     return std::count(unique.begin(), unique.end(), action) == 0;
                 });
    assign(m_config.enabledActions, unique);
}

QStringList DropActionsService::enabledActionNames() const
{
    QStringList names;
    for (const DropActionID action : m_config.enabledActions) {
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
    assign(m_config.shelfFolder, folder);
}

void DropActionsService::setCopyFolder(const QUrl &folder)
{
    assign(m_config.copyFolder, folder);
}

void DropActionsService::setMoveFolder(const QUrl &folder)
{
    assign(m_config.moveFolder, folder);
}

void DropActionsService::setImageConvertFormat(const QString &format)
{
    assign(m_config.imageConvertFormat, format);
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
    setShelfFolder(config->shelfFolder);
    setCopyFolder(config->copyFolder);
    setMoveFolder(config->moveFolder);
    setImageConvertFormat(config->imageConvertFormat);
}

} // namespace velmora
