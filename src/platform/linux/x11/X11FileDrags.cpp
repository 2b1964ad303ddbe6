#include "platform/linux/x11/X11FileDrags.h"

#include <QLoggingCategory>
#include <QThreadPool>
#include <QtConcurrent>

#include <utility>
#include <xcb/xfixes.h>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcDrags, "com.velmora.app.Pointer", QtInfoMsg)

/// Some thousand addresses, read within a millisecond or two. More are read beside the main loop.
constexpr qsizetype readAtOnce = 65'536;

/// To free a very long list takes longer than a few frames.
void discard(QList<QUrl> files)
{
    if (files.size() > 1000)
        QThreadPool::globalInstance()->start([files = std::move(files)] {});
}

} // namespace

X11FileDrags::X11FileDrags(std::shared_ptr<X11Connection> connection, const X11Pointer &pointer)
    : m_connection(std::move(connection))
    , m_reader(m_connection)
    , m_selection(m_connection->atom("XdndSelection"))
    , m_uriList(m_connection->atom("text/uri-list"))
{
    xcb_connection_t *xcb = m_connection->xcb();
    const auto *fixes = xcb_get_extension_data(xcb, &xcb_xfixes_id);
    const XcbPtr<xcb_xfixes_query_version_reply_t> version(
        fixes && fixes->present
            ? xcb_xfixes_query_version_reply(xcb, xcb_xfixes_query_version(xcb, 5, 0), nullptr)
            : nullptr);
    if (!version) {
        qCInfo(lcDrags, "no XFixes: drags of files are seen once they reach the notch");
        return;
    }
    m_selectionEvent = fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY;
    xcb_xfixes_select_selection_input(xcb, m_connection->root(), m_selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
    xcb_flush(xcb);
    connect(m_connection.get(), &X11Connection::eventArrived, this, &X11FileDrags::handleEvent);
    connect(&m_reader, &SelectionReader::arrived, this, &X11FileDrags::take);
    // The drop comes a little later, and wants to know the files still.
    connect(&pointer, &X11Pointer::released, this, &FileDrags::released);
}

X11FileDrags::~X11FileDrags() = default;

void X11FileDrags::handleEvent(const xcb_generic_event_t *event)
{
    if ((event->response_type & 0x7f) != m_selectionEvent)
        return;
    const auto *change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t *>(event);
    if (change->selection == m_selection && change->owner != XCB_NONE) {
        ++m_drag;
        discard(std::exchange(m_files, {}));
        m_reader.read(m_selection, m_uriList, change->selection_timestamp);
    }
}

void X11FileDrags::take(const QByteArray &uriList)
{
    if (uriList.size() <= readAtOnce) {
        m_files = localFilesOf(uriList);
        if (!m_files.isEmpty())
            Q_EMIT began(m_files);
        return;
    }
    const auto first = localFilesOf(uriList.left(uriList.lastIndexOf('\n', readAtOnce) + 1));
    m_isAnnounced = !first.isEmpty();
    QtConcurrent::run(localFilesOf, uriList)
        .then(this, [this, drag = m_drag](const QList<QUrl> &all) { takeAll(drag, all); });
    if (m_isAnnounced)
        Q_EMIT began(first);
}

void X11FileDrags::takeAll(int drag, const QList<QUrl> &files)
{
    if (drag != m_drag)
        return;
    m_files = files;
    if (m_files.isEmpty())
        return;
    if (m_isAnnounced)
        Q_EMIT completed(m_files);
    else
        Q_EMIT began(m_files);
}

} // namespace velmora
