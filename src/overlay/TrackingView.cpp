#include "overlay/TrackingView.h"

#include <QMimeData>

#include <algorithm>
#include <iterator>

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
    const QList<QUrl> urls = data.urls();
    QList<QUrl> files;
    std::copy_if(urls.begin(), urls.end(), std::back_inserter(files),
                 [](const QUrl &url) { return url.isLocalFile(); });
    return files;
}

void TrackingView::mouseEntered() const
{
    call(onMouseEntered);
}

void TrackingView::mouseExited() const
{
    call(onMouseExited);
}

bool TrackingView::draggingEntered(const QMimeData &data) const
{
    const QList<QUrl> files = draggedFileUrls(data);
    if (files.isEmpty() && !promisesFiles(data)) {
        return false;
    }
    call(onDragEntered, files);
    return true;
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
    QList<QUrl> files = draggedFileUrls(data);
    if (files.isEmpty() && draggedFilesProvider) {
        files = draggedFilesProvider();
    }
    call(onDragPerformed, files, position);
}

} // namespace velmora
