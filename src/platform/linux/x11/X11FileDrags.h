#pragma once

#include "platform/FileDrags.h"
#include "platform/linux/x11/SelectionReader.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Pointer.h"

#include <memory>

namespace velmora
{

/// A drag announces itself by taking the drag selection. Its list of files is read at once, with
/// the time stamp of that, and once: later on, sources of some toolkits do not answer others any
/// more.
class X11FileDrags final : public FileDrags
{
    Q_OBJECT

public:
    /// `pointer` tells when a drag is over.
    X11FileDrags(std::shared_ptr<X11Connection> connection, const X11Pointer &pointer);
    ~X11FileDrags() override;
    Q_DISABLE_COPY_MOVE(X11FileDrags)

    [[nodiscard]] QList<QUrl> files() const override { return m_files; }

private:
    void handleEvent(const xcb_generic_event_t *event);
    void take(const QByteArray &uriList);
    void takeAll(int drag, const QList<QUrl> &files);

    std::shared_ptr<X11Connection> m_connection;
    SelectionReader m_reader;
    xcb_atom_t m_selection;
    xcb_atom_t m_uriList;
    std::uint8_t m_selectionEvent = 0; ///< 0 if the server does not tell of owners
    int m_drag = 0;                    ///< counts them
    bool m_isAnnounced = false;
    QList<QUrl> m_files;
};

} // namespace velmora
