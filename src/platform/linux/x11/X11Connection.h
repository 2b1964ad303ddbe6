#pragma once

#include <QObject>

#include <cstdint>
#include <memory>
#include <optional>
#include <xcb/xcb.h>

class QSocketNotifier;

namespace velmora
{

/// Frees what xcb hands out.
struct XcbFree {
    void operator()(void *pointer) const noexcept;
};
template<typename T>
using XcbPtr = std::unique_ptr<T, XcbFree>;

/// Whether the server is XWayland: by its extension, or by what older ones call their outputs.
[[nodiscard]] bool isXWayland(xcb_connection_t *connection);

/// A connection to the X server beside Qt's: events that are asked for here neither pass through
/// Qt nor disturb what Qt has selected on the same windows. It costs nothing while nothing happens.
class X11Connection final : public QObject
{
    Q_OBJECT

public:
    /// Null if there is no server to reach.
    [[nodiscard]] static std::shared_ptr<X11Connection> open();
    ~X11Connection() override;
    Q_DISABLE_COPY_MOVE(X11Connection)

    [[nodiscard]] xcb_connection_t *xcb() const { return m_connection; }
    [[nodiscard]] xcb_window_t root() const { return m_root; }
    [[nodiscard]] xcb_atom_t atom(const char *name) const;

    /// Adds to the core events of the root window that come here.
    void selectOnRoot(std::uint32_t eventMask);

    /// Takes the reply to a question (its sequence number) if it has come, and forgets the
    /// question; null was an error. Returns whether it has come. To be asked in `dispatched`.
    template<typename Reply>
    [[nodiscard]] bool takeReply(std::optional<unsigned int> &question, XcbPtr<Reply> &reply) const
    {
        void *answer = nullptr;
        if (!question || !pollReply(*question, answer))
            return false;
        question.reset();
        reply.reset(static_cast<Reply *>(answer));
        return true;
    }

    /// Hands out what has arrived. Call it after having waited for a reply: events that came with
    /// it are in memory, and the socket does not tell of them.
    void dispatch();

Q_SIGNALS:
    /// Valid during the signal only.
    void eventArrived(const xcb_generic_event_t *event);
    /// Everything at hand has been read; asynchronous replies can be polled for.
    void dispatched();

private:
    [[nodiscard]] bool pollReply(unsigned int sequence, void *&answer) const;
    explicit X11Connection(xcb_connection_t *connection, int screenNumber);

    xcb_connection_t *m_connection;
    xcb_window_t m_root = XCB_NONE;
    std::uint32_t m_rootMask = 0;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace velmora
