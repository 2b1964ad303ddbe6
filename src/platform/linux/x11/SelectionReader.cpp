#include "platform/linux/x11/SelectionReader.h"

#include <utility>

namespace velmora
{

namespace
{

constexpr qsizetype largest = 67'108'864;

} // namespace

SelectionReader::SelectionReader(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
    , m_window(xcb_generate_id(m_connection->xcb()))
    , m_property(m_connection->atom("VELMORA_SELECTION"))
    , m_incremental(m_connection->atom("INCR"))
{
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection->xcb(), XCB_COPY_FROM_PARENT, m_window, m_connection->root(), -1,
                      -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT,
                      XCB_CW_EVENT_MASK, &events);
    xcb_flush(m_connection->xcb());
    connect(m_connection.get(), &X11Connection::eventArrived, this, &SelectionReader::handleEvent);
    connect(m_connection.get(), &X11Connection::dispatched, this, &SelectionReader::takeAnswer);
}

SelectionReader::~SelectionReader()
{
    xcb_destroy_window(m_connection->xcb(), m_window);
    xcb_flush(m_connection->xcb());
}

void SelectionReader::read(xcb_atom_t selection, xcb_atom_t target, xcb_timestamp_t time)
{
    cancel();
    m_isReading = true;
    m_time = time;
    xcb_convert_selection(m_connection->xcb(), m_window, selection, target, m_property, time);
    xcb_flush(m_connection->xcb());
}

void SelectionReader::cancel()
{
    if (m_question)
        xcb_discard_reply(m_connection->xcb(), *m_question);
    m_question.reset();
    m_isReading = false;
    m_comesInPieces = false;
    m_hasNextPiece = false;
    m_data.clear();
}

void SelectionReader::handleEvent(const xcb_generic_event_t *event)
{
    if (!m_isReading)
        return;
    const int type = event->response_type & 0x7f;
    if (type == XCB_SELECTION_NOTIFY) {
        const auto *notice = reinterpret_cast<const xcb_selection_notify_event_t *>(event);
        if (notice->requestor != m_window || notice->time != m_time)
            return; // the answer to an earlier question
        if (notice->property == XCB_NONE)
            cancel();
        else
            ask();
    } else if (type == XCB_PROPERTY_NOTIFY && (m_comesInPieces || m_question)) {
        const auto *notice = reinterpret_cast<const xcb_property_notify_event_t *>(event);
        if (notice->window != m_window || notice->atom != m_property ||
            notice->state != XCB_PROPERTY_NEW_VALUE)
            return;
        // The news of the next piece may be read together with the answer that holds this one.
        m_hasNextPiece = m_question.has_value();
        ask();
    }
}

/// Taking the property away is what asks the owner for the next piece.
void SelectionReader::ask()
{
    if (m_question)
        return;
    m_question = xcb_get_property(m_connection->xcb(), 1, m_window, m_property,
                                  XCB_GET_PROPERTY_TYPE_ANY, 0, largest / 4)
                     .sequence;
    xcb_flush(m_connection->xcb());
}

void SelectionReader::takeAnswer()
{
    XcbPtr<xcb_get_property_reply_t> piece;
    if (!m_connection->takeReply(m_question, piece))
        return;
    if (piece)
        take(*piece);
    else
        cancel();
    if (m_comesInPieces && std::exchange(m_hasNextPiece, false))
        ask();
}

void SelectionReader::take(const xcb_get_property_reply_t &piece)
{
    if (piece.type == m_incremental && !m_comesInPieces) {
        m_comesInPieces = true;
        return;
    }
    const auto length = xcb_get_property_value_length(&piece);
    if (piece.format != 8 || m_data.size() + length > largest) {
        cancel();
        return;
    }
    m_data.append(static_cast<const char *>(xcb_get_property_value(&piece)), length);
    if (m_comesInPieces && length > 0)
        return;
    const QByteArray data = std::exchange(m_data, {});
    cancel();
    Q_EMIT arrived(data);
}

} // namespace velmora
