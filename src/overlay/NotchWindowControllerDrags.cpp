// The half of the controller that deals with files dragged over the desktop and over the notch.
#include "overlay/NotchWindowController.h"

#include <QLoggingCategory>
#include <QMimeData>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcWindowDrags, "com.velmora.app.WindowController", QtInfoMsg)

constexpr std::chrono::milliseconds dragExpandDuration(220);
/// How long a source may take from the release of the button to the drop.
constexpr std::chrono::milliseconds dropPatience(3000);
/// How long the choice of an application waits for a pointer that is elsewhere.
constexpr std::chrono::milliseconds choicePatience(10000);

} // namespace

void NotchWindowController::setupDragMonitors()
{
    connect(&m_environment.drags, &FileDrags::began, this, &NotchWindowController::globalDragBegan);
    connect(&m_environment.drags, &FileDrags::completed, this, [this](const QList<QUrl> &files) {
        if (m_dragPart != DragPart::None) {
            dropService().setDraggedFiles(files);
        }
    });
    connect(&m_environment.drags, &FileDrags::released, this,
            &NotchWindowController::globalMouseUp);
}

void NotchWindowController::observeDropState()
{
    connect(&dropService(), &DropActionsService::isDraggingChanged, this,
            &NotchWindowController::isDraggingChanged);
    connect(dropService().openWithMenu(), &OpenWithMenu::changed, this,
            &NotchWindowController::openWithMenuChanged);
    connect(&dropService(), &DropActionsService::lastStatusChanged, this, [this] {
        const bool isStripAway = m_isExpanded || dropService().isDragging();
        setMissedStatus(isStripAway ? dropService().lastStatus() : QString());
    });
}

/// By any of the notches.
void NotchWindowController::isDraggingChanged()
{
    m_dragPart = DragPart::None;
    m_dropWait.reset();
    if (dropService().isDragging()) {
        dismissOpenWith();
        m_dropPosition.reset();
    } else if (m_window) {
        scheduleCollapse();
    }
}

DropActionsService &NotchWindowController::dropService() const
{
    return *m_services.dropService();
}

void NotchWindowController::globalDragBegan(const QList<QUrl> &files)
{
    // Another screen's notch may have opened for it already.
    if (!m_window || dropService().isDragging()) {
        return;
    }
    qCDebug(lcWindowDrags, "global file drag detected (%lld file(s)) \u2014 proactively expanding",
            static_cast<long long>(files.size()));
    beginDrag(files, DragPart::Opened);
}

void NotchWindowController::globalMouseUp()
{
    switch (m_dragPart) {
    case DragPart::None:
        break;
    case DragPart::Opened:
        qCDebug(lcWindowDrags,
                "global mouse up \u2014 drag ended outside notch, resetting drop state");
        endDrag();
        break;
    case DragPart::Entered:
        // A release over the notch is a drop: the source delivers it next. One that has died
        // meanwhile never does.
        m_dropWait = m_environment.clock.after(dropPatience, [this] { endDrag(); });
        break;
    }
}

/// To read the data waits for the source, and takes its time if there are many files.
QList<QUrl> NotchWindowController::filesOf(const QMimeData &data) const
{
    const QList<QUrl> known = m_environment.drags.files();
    return known.isEmpty() ? localFilesOf(data.data(QStringLiteral("text/uri-list"))) : known;
}

bool NotchWindowController::dragEntered(const QMimeData &data)
{
    const QList<QUrl> files = filesOf(data);
    // A source that writes the file only once it is dropped names no address before.
    if (files.isEmpty() && !data.hasFormat(QStringLiteral("XdndDirectSave0"))) {
        return false;
    }
    qCInfo(lcWindowDrags, "drag entered: %lld file(s)", static_cast<long long>(files.size()));
    beginDrag(files, DragPart::Entered);
    return true;
}

void NotchWindowController::dragUpdated(const QPointF &position)
{
    dropService().setHoveredAction(actionAt(position));
}

void NotchWindowController::dragExited()
{
    qCDebug(lcWindowDrags, "drag exited");
    endDrag();
}

void NotchWindowController::dragPerformed(const QMimeData &data, const QPointF &position)
{
    DropActionsService &drop = dropService();
    const QList<QUrl> given = filesOf(data);
    const QList<QUrl> files = given.isEmpty() ? drop.draggedFiles() : given;
    qCInfo(lcWindowDrags, "drag performed: %lld file(s) at (%f, %f)",
           static_cast<long long>(files.size()), position.x(), position.y());
    if (files.isEmpty()) {
        qCCritical(lcWindowDrags, "drag performed but no files \u2014 aborting");
        endDrag();
        return;
    }
    auto action = actionAt(position);
    if (!action) {
        action = drop.hoveredAction();
    }
    m_dropPosition = position;
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

void NotchWindowController::beginDrag(const QList<QUrl> &files, DragPart part)
{
    dropService().setDraggedFiles(files);
    dropService().setDragging(true);
    dropService().setLastStatus(QString());
    m_dragPart = part;
    m_collapseWork.reset();
    if (m_window && !m_screen.expired() && !m_isExpanded) {
        openPanel(dragExpandDuration);
    }
}

void NotchWindowController::endDrag()
{
    dropService().setDragging(false);
    dropService().setDraggedFiles({});
    dropService().setHoveredAction(std::nullopt);
    if (m_window) {
        scheduleCollapse();
    }
}

void NotchWindowController::openWithMenuChanged()
{
    const bool shown = m_window && m_dropPosition && dropService().openWithMenu()->isOpen();
    if (shown == m_isOpenWithShown) {
        return;
    }
    m_isOpenWithShown = shown;
    Q_EMIT openWithChanged();
    m_collapseWork.reset();
    if (!shown) {
        if (m_isExpanded) {
            scheduleCollapse();
        }
        return;
    }
    dropService().openWithMenu()->setShown();
    // The panel may have closed while the applications were looked for.
    if (!m_isExpanded && !m_screen.expired()) {
        openPanel(dragExpandDuration);
    }
    if (!isPointerInside()) {
        m_collapseWork = m_environment.clock.after(choicePatience, [this] { collapseWorkFired(); });
    }
}

QList<StatusMenuEntry> NotchWindowController::openWithEntries() const
{
    const OpenWithMenu &menu = *dropService().openWithMenu();
    const QStringList titles = menu.titles();
    const QStringList icons = menu.iconNames();
    QList<StatusMenuEntry> entries;
    for (qsizetype i = 0; i < titles.size(); ++i) {
        StatusMenuEntry entry;
        entry.title = titles[i];
        entry.iconName = icons[i];
        entries << entry;
    }
    return entries;
}

void NotchWindowController::dismissOpenWith()
{
    if (m_isOpenWithShown) {
        dropService().openWithMenu()->dismiss();
    }
}

void NotchWindowController::setMissedStatus(const QString &status)
{
    if (status != m_missedStatus) {
        m_missedStatus = status;
        Q_EMIT missedStatusChanged();
    }
}

std::optional<DropActionID> NotchWindowController::actionAt(const QPointF &position) const
{
    const auto &actions = dropService().enabledActions();
    const int slot = m_geometry.dropSlotAt(position.x() - m_geometry.panel.x(),
                                           static_cast<int>(actions.size()));
    return slot < 0 ? std::nullopt : std::optional(actions[static_cast<size_t>(slot)]);
}

} // namespace velmora
