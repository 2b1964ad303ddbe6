#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <QByteArray>
#include <QObject>

#include <memory>
#include <optional>

namespace velmora
{

/// Reads what another program offers by a selection, without ever waiting for it: one reading at a
/// time, of which a later one takes the place of an earlier.
class SelectionReader final : public QObject
{
    Q_OBJECT

public:
    explicit SelectionReader(std::shared_ptr<X11Connection> connection);
    ~SelectionReader() override;
    Q_DISABLE_COPY_MOVE(SelectionReader)

    /// `time`: when the owner became it, in the server's time.
    void read(xcb_atom_t selection, xcb_atom_t target, xcb_timestamp_t time);
    void cancel();

Q_SIGNALS:
    /// Not sent for what cannot be had, nor for more than 64 MB.
    void arrived(const QByteArray &data);

private:
    void handleEvent(const xcb_generic_event_t *event);
    void ask();
    void takeAnswer();
    void take(const xcb_get_property_reply_t &piece);

    std::shared_ptr<X11Connection> m_connection;
    xcb_window_t m_window;
    xcb_atom_t m_property; ///< where the owner puts it
    xcb_atom_t m_incremental;
    xcb_timestamp_t m_time = 0; ///< of the reading under way
    std::optional<unsigned int> m_question;
    bool m_isReading = false;
    bool m_comesInPieces = false;
    bool m_hasNextPiece = false; ///< it was announced before this one arrived
    QByteArray m_data;
};

} // namespace velmora
