#include "overlay/TrackingView.h"

#include "platform/FileDrags.h"

#include <QMimeData>

namespace velmora
{

namespace
{

/// A source that writes the file only once it is dropped names no address before.
bool promisesFiles(const QMimeData &data)
{
    return data.hasFormat(QStringLiteral("XdndDirectSave0"));
}

template<typename Callback, typename... Arguments>
void call(const Callback &callback, const Arguments &...arguments)
{
    if (callback) {
        callback(arguments...);
    }
}

} // namespace

QList<QUrl> draggedFileUrls(const QMimeData &data)
{
    return localFilesOf(data.data(QStringLiteral("text/uri-list")));
}

void TrackingView::mouseEntered(const QPointF &position) const
{
    call(onMouseEntered, position);
}

void TrackingView::mouseMoved(const QPointF &position) const
{
    call(onMouseMoved, position);
}

bool TrackingView::mousePressed(const QPointF &position) const
{
    return onMousePressed && onMousePressed(position);
}

void TrackingView::mouseExited() const
{
    call(onMouseExited);
}

bool TrackingView::draggingEntered(const QMimeData &data) const
{
    const QList<QUrl> files = filesOf(data);
    if (files.isEmpty() && !promisesFiles(data)) {
        return false;
    }
    call(onDragEntered, files);
    return true;
}

/// To read the data waits for the source, and takes its time if there are many files.
QList<QUrl> TrackingView::filesOf(const QMimeData &data) const
{
    QList<QUrl> files;
    if (draggedFilesProvider) {
        files = draggedFilesProvider();
    }
    return files.isEmpty() ? draggedFileUrls(data) : files;
}

void TrackingView::draggingUpdated(const QPointF &position) const
{
    call(onDragUpdated, position);
}

void TrackingView::draggingExited() const
{
    call(onDragExited);
}

void TrackingView::performDragOperation(const QMimeData &data, const QPointF &position) const
{
    call(onDragPerformed, filesOf(data), position);
}

} // namespace velmora
