// The half of the controller that deals with files dragged over the desktop and over the notch.
#include "overlay/NotchGeometry.h"
#include "overlay/NotchWindowController.h"

#include <QLoggingCategory>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcWindowDrags, "com.velmora.app.WindowController", QtInfoMsg)

constexpr std::chrono::milliseconds dragExpandDuration(220);
/// How long a source may take from the release of the button to the drop.
constexpr std::chrono::milliseconds dropPatience(3000);

} // namespace

void NotchWindowController::setupDragTracking()
{
    m_trackingView.onDragEntered = [this](const auto &files) { dragEntered(files); };
    m_trackingView.onDragUpdated = [this](const QPointF &position) { dragUpdated(position); };
    m_trackingView.onDragExited = [this] { dragExited(); };
    m_trackingView.onDragPerformed = [this](const auto &files, const QPointF &position) {
        dragPerformed(files, position);
    };
    m_trackingView.draggedFilesProvider = [this] { return m_environment.drags.files(); };
}

void NotchWindowController::setupDragMonitors()
{
    connect(&m_environment.drags, &FileDrags::began, this, &NotchWindowController::globalDragBegan);
    connect(&m_environment.drags, &FileDrags::completed, this, [this](const QList<QUrl> &files) {
        if (m_proactivelyExpanded && dropService().isDragging()) {
            dropService().setDraggedFiles(files);
        }
    });
    connect(&m_environment.drags, &FileDrags::released, this,
            &NotchWindowController::globalMouseUp);
}

void NotchWindowController::observeDropState()
{
    connect(&dropService(), &DropActionsService::isDraggingChanged, this, [this] {
        if (dropService().isDragging()) {
            setDropPosition(std::nullopt);
        } else if (m_window) {
            m_proactivelyExpanded = false;
            m_dropWait.reset();
            scheduleCollapse();
        }
    });
}

DropActionsService &NotchWindowController::dropService() const
{
    return *m_services.dropService();
}

void NotchWindowController::globalDragBegan(const QList<QUrl> &files)
{
    // Another screen's notch may have opened for it already.
    if (m_proactivelyExpanded || dropService().isDragging()) {
        return;
    }
    qCDebug(lcWindowDrags, "global file drag detected (%lld file(s)) \u2014 proactively expanding",
            static_cast<long long>(files.size()));
    m_proactivelyExpanded = true;
    beginDrag(files);
}

void NotchWindowController::globalMouseUp()
{
    if (!m_proactivelyExpanded) {
        return;
    }
    // A release over the notch is a drop: the source delivers it next. One that has died meanwhile
    // never does.
    if (m_isDragInside) {
        m_dropWait = m_environment.clock.after(dropPatience, [this] {
            m_isDragInside = false;
            globalMouseUp();
        });
        return;
    }
    m_proactivelyExpanded = false;
    if (!dropService().isDragging()) {
        return;
    }
    qCDebug(lcWindowDrags, "global mouse up \u2014 drag ended outside notch, resetting drop state");
    endDrag();
}

void NotchWindowController::dragEntered(const QList<QUrl> &files)
{
    qCInfo(lcWindowDrags, "drag entered: %lld file(s)", static_cast<long long>(files.size()));
    m_isDragInside = true;
    beginDrag(files);
}

void NotchWindowController::dragUpdated(const QPointF &position)
{
    dropService().setHoveredAction(actionAt(position.x()));
}

void NotchWindowController::dragExited()
{
    qCDebug(lcWindowDrags, "drag exited");
    m_isDragInside = false;
    endDrag();
}

void NotchWindowController::dragPerformed(const QList<QUrl> &given, const QPointF &position)
{
    DropActionsService &drop = dropService();
    const QList<QUrl> files = given.isEmpty() ? drop.draggedFiles() : given;
    m_isDragInside = false;
    qCInfo(lcWindowDrags, "drag performed: %lld file(s) at (%f, %f)",
           static_cast<long long>(files.size()), position.x(), position.y());
    if (files.isEmpty()) {
        qCCritical(lcWindowDrags, "drag performed but no files \u2014 aborting");
        endDrag();
        return;
    }
    auto action = actionAt(position.x());
    if (!action) {
        action = drop.hoveredAction();
    }
    setDropPosition(position + panelOrigin());
    if (action) {
        qCInfo(lcWindowDrags, "executing action: %s on %lld file(s)",
               qUtf8Printable(rawValue(*action)), static_cast<long long>(files.size()));
        // In its own turn, and not by way of this controller, which may be gone by then.
        QMetaObject::invokeMethod(
            &drop, [&drop, action = *action, files] { drop.execute(action, files); },
            Qt::QueuedConnection);
    }
    endDrag();
}

void NotchWindowController::beginDrag(const QList<QUrl> &files)
{
    m_collapseWork.reset();
    dropService().setDraggedFiles(files);
    dropService().setDragging(true);
    dropService().setLastStatus(QString());
    const auto screen = m_screen.lock();
    if (m_window && screen && !m_notchState.isExpanded()) {
        m_notchState.setExpanded(true);
        animateWindow(NotchGeometry::expanded(screen->frame(), m_settings), dragExpandDuration);
    }
}

void NotchWindowController::endDrag()
{
    m_proactivelyExpanded = false;
    dropService().setDragging(false);
    dropService().setDraggedFiles({});
    dropService().setHoveredAction(std::nullopt);
    if (m_window) {
        scheduleCollapse();
    }
}

void NotchWindowController::setDropPosition(const std::optional<QPointF> &position)
{
    m_dropPosition = position;
    Q_EMIT dropped();
}

std::optional<DropActionID> NotchWindowController::actionAt(double x) const
{
    const auto &actions = dropService().enabledActions();
    const int slot = NotchGeometry::dropSlotAt(x, static_cast<int>(actions.size()));
    return slot < 0 ? std::nullopt : std::optional(actions[static_cast<size_t>(slot)]);
}

} // namespace velmora
