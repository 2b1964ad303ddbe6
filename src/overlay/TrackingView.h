#pragma once

#include <QList>
#include <QPointF>
#include <QUrl>

#include <functional>

class QMimeData;

namespace velmora
{

/// Turns what the pointer does over the overlay into callbacks: hovering, and file drags in the
/// order entered, any number of updates, then exited or performed. Positions are those in the
/// window. Callbacks may be left empty.
class TrackingView
{
public:
    std::function<void(const QPointF &position)> onMouseEntered;
    std::function<void(const QPointF &position)> onMouseMoved; ///< with no button pressed
    /// Whether the press has had its effect, and is not for the views.
    std::function<bool(const QPointF &position)> onMousePressed;
    std::function<void()> onMouseExited;
    std::function<void(const QList<QUrl> &files)> onDragEntered;
    std::function<void(const QPointF &position)> onDragUpdated;
    std::function<void()> onDragExited;
    std::function<void(const QList<QUrl> &files, const QPointF &position)> onDragPerformed;
    /// The files of the drag that goes on, if they are known already: the drag is not read then.
    std::function<QList<QUrl>()> draggedFilesProvider;

    void mouseEntered(const QPointF &position) const;
    void mouseMoved(const QPointF &position) const;
    [[nodiscard]] bool mousePressed(const QPointF &position) const;
    void mouseExited() const;

    /// Whether the drag can be dropped here, as a copy: only what is or promises files.
    [[nodiscard]] bool draggingEntered(const QMimeData &data) const;
    void draggingUpdated(const QPointF &position) const;
    void draggingExited() const;
    void performDragOperation(const QMimeData &data, const QPointF &position) const;

private:
    [[nodiscard]] QList<QUrl> filesOf(const QMimeData &data) const;
};

/// The local files among the addresses of a drag, in order.
[[nodiscard]] QList<QUrl> draggedFileUrls(const QMimeData &data);

} // namespace velmora
