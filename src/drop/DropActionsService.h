#pragma once

#include "drop/DropConfig.h"
#include "drop/OpenWithMenu.h"
#include "platform/FileActions.h"

#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <optional>
#include <vector>

namespace velmora
{

class ChildProcesses;
class ImageConverter;
class KeyValueStore;
class Sharing;
class Volumes;

/// What the drop actions ask of a platform.
struct DropRoles {
    FileActions &files;
    ImageConverter &images;
    ChildProcesses &processes;
    Applications &applications;
    Volumes &volumes;
    Sharing &sharing;
};

/// Files dragged over the notch, what the user has set up for them, and what became of the last
/// drop. One for all screens. Main thread only; the work itself is done elsewhere.
///
/// Every assignment of a property is told, also of the value that it has already, and every
/// assignment of a stored one is written to the store at once.
class DropActionsService : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made once by the program")

    Q_PROPERTY(bool isDragging READ isDragging WRITE setDragging NOTIFY isDraggingChanged FINAL)
    Q_PROPERTY(QList<QUrl> draggedFiles READ draggedFiles WRITE setDraggedFiles NOTIFY
                   draggedFilesChanged FINAL)
    /// Raw value; empty for none.
    Q_PROPERTY(QString hoveredAction READ hoveredActionName NOTIFY hoveredActionChanged FINAL)
    Q_PROPERTY(
        QString lastStatus READ lastStatus WRITE setLastStatus NOTIFY lastStatusChanged FINAL)
    /// Raw values, in the order of the buttons. Unknown and repeated ones are left out when
    /// assigned.
    Q_PROPERTY(QStringList enabledActions READ enabledActionNames WRITE setEnabledActionNames NOTIFY
                   configChanged FINAL)
    Q_PROPERTY(QUrl shelfFolder READ shelfFolder WRITE setShelfFolder NOTIFY configChanged FINAL)
    Q_PROPERTY(QUrl copyFolder READ copyFolder WRITE setCopyFolder NOTIFY configChanged FINAL)
    Q_PROPERTY(QUrl moveFolder READ moveFolder WRITE setMoveFolder NOTIFY configChanged FINAL)
    Q_PROPERTY(QString imageConvertFormat READ imageConvertFormat WRITE setImageConvertFormat NOTIFY
                   configChanged FINAL)
    Q_PROPERTY(velmora::OpenWithMenu *openWithMenu READ openWithMenu CONSTANT FINAL)

public:
    /// Reads the configuration and has the shelf's folder made. What is handed in has to outlive
    /// the service.
    DropActionsService(KeyValueStore &store, const DropRoles &roles, QObject *parent = nullptr);

    [[nodiscard]] bool isDragging() const { return m_isDragging; }
    void setDragging(bool dragging);
    [[nodiscard]] const QList<QUrl> &draggedFiles() const { return m_draggedFiles; }
    void setDraggedFiles(const QList<QUrl> &files);
    [[nodiscard]] std::optional<DropActionID> hoveredAction() const { return m_hoveredAction; }
    void setHoveredAction(std::optional<DropActionID> action);
    [[nodiscard]] QString hoveredActionName() const;
    [[nodiscard]] const QString &lastStatus() const { return m_lastStatus; }
    void setLastStatus(const QString &status);

    [[nodiscard]] const std::vector<DropActionID> &enabledActions() const
    {
        return m_config.enabledActions;
    }
    void setEnabledActions(const std::vector<DropActionID> &actions);
    [[nodiscard]] QStringList enabledActionNames() const;
    void setEnabledActionNames(const QStringList &rawValues);
    [[nodiscard]] const QUrl &shelfFolder() const { return m_config.shelfFolder; }
    void setShelfFolder(const QUrl &folder);
    [[nodiscard]] const QUrl &copyFolder() const { return m_config.copyFolder; }
    void setCopyFolder(const QUrl &folder);
    [[nodiscard]] const QUrl &moveFolder() const { return m_config.moveFolder; }
    void setMoveFolder(const QUrl &folder);
    [[nodiscard]] const QString &imageConvertFormat() const { return m_config.imageConvertFormat; }
    void setImageConvertFormat(const QString &format);

    /// Open while an "Open With" waits for its answer.
    [[nodiscard]] OpenWithMenu *openWithMenu() { return &m_openWithMenu; }

    /// Performs an action on dropped files and returns at once. Its outcome goes to `lastStatus`
    /// when it has ended: first what was done, then the summary, in one turn of the main loop; if
    /// it failed, only why. Several may run side by side; the last to end has the last word.
    /// Without files nothing happens.
    void execute(DropActionID action, const QList<QUrl> &files);

Q_SIGNALS:
    void isDraggingChanged();
    void draggedFilesChanged();
    void hoveredActionChanged();
    void lastStatusChanged();
    void configChanged(); ///< any of what is stored

private:
    void load();
    /// Stores and tells.
    template<typename Value>
    void assign(Value &setting, const Value &value);

    KeyValueStore &m_store;
    DropRoles m_roles;

    bool m_isDragging = false;
    QList<QUrl> m_draggedFiles;
    std::optional<DropActionID> m_hoveredAction;
    QString m_lastStatus;
    DropConfig m_config;
    OpenWithMenu m_openWithMenu;
};

} // namespace velmora
