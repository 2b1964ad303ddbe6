#pragma once

#include "eye/Ticker.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace velmora::bench
{

/// A client with a small window from which files are dragged, after version 5 of the protocol of
/// drags (XDND). Throws std::runtime_error when the X server does not answer.
class XdndSource
{
public:
    /// What the program under the pointer has said since the last `enter`.
    struct Answer {
        bool isKnown = false;
        bool isAccepted = false;
        bool isFinished = false;
    };

    /// `uriList` is what is dragged: addresses, each ended by CR and LF.
    XdndSource(const std::string &display, std::string uriList);

    /// A point of the window, from which a drag begins.
    static constexpr int16_t x = 130;
    static constexpr int16_t y = 630;

    /// Handles events until `isDone` holds after one of them, or until `end`. True if it holds.
    bool serveUntil(SteadyClock::time_point end, const std::function<bool()> &isDone = {});

    /// Takes the selection of drags, at the time of the last event of the pointer.
    void takeSelection();

    /// The window at a point of the screen that takes drags; none if there is none.
    [[nodiscard]] xcb_window_t targetAt(int16_t rootX, int16_t rootY) const;

    void enter(xcb_window_t target);
    void moveOver(xcb_window_t target, int16_t rootX, int16_t rootY);
    void leave(xcb_window_t target);
    void drop(xcb_window_t target);

    [[nodiscard]] const Answer &answer() const { return m_answer; }
    [[nodiscard]] bool isButtonDown() const { return m_isButtonDown; }

    /// How often somebody has asked for the selection.
    [[nodiscard]] int asked() const { return m_asked; }

private:
    struct Disconnect {
        void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
    };

    /// A list that is handed over in pieces.
    struct Transfer {
        xcb_window_t requestor;
        xcb_atom_t property;
        size_t offset;
    };

    [[nodiscard]] xcb_atom_t atom(const std::string &name) const;
    void handle(const xcb_generic_event_t &event);
    void handOver(const xcb_selection_request_event_t &request);
    void continueWith(const xcb_property_notify_event_t &notice);
    void tell(xcb_window_t target, xcb_atom_t type, uint32_t flags, uint32_t first = 0,
              uint32_t second = 0, uint32_t third = 0);

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    std::string m_uriList;
    size_t m_pieceSize = 0;
    xcb_window_t m_root = XCB_NONE;
    xcb_window_t m_window = XCB_NONE;
    xcb_atom_t m_aware = XCB_NONE;
    xcb_atom_t m_enter = XCB_NONE;
    xcb_atom_t m_position = XCB_NONE;
    xcb_atom_t m_status = XCB_NONE;
    xcb_atom_t m_leave = XCB_NONE;
    xcb_atom_t m_drop = XCB_NONE;
    xcb_atom_t m_finished = XCB_NONE;
    xcb_atom_t m_selection = XCB_NONE;
    xcb_atom_t m_copy = XCB_NONE;
    xcb_atom_t m_uriListType = XCB_NONE;
    xcb_atom_t m_incremental = XCB_NONE;
    xcb_timestamp_t m_time = XCB_CURRENT_TIME;
    Answer m_answer;
    std::vector<Transfer> m_transfers;
    bool m_isButtonDown = false;
    int m_asked = 0;
};

} // namespace velmora::bench
