#pragma once

#include <cstdint>
#include <optional>
#include <vector>
#include <xcb/xcb.h>

namespace velmora
{

/// Takes the moves of the pointer out of what Qt has selected on one of its windows, and puts them
/// back. Everything else that Qt hears, the pointer's coming and going too, stays.
class MotionSelection
{
public:
    /// `connection` is Qt's: a selection belongs to the client that made it.
    MotionSelection(xcb_connection_t *connection, xcb_window_t window);

    void setSelected(bool selected);

private:
    struct DeviceMask {
        std::uint16_t device;
        std::vector<std::uint32_t> events; ///< a bit for each type of event
    };

    void remember();
    void selectOnDevice(const DeviceMask &mask) const;

    xcb_connection_t *m_connection;
    xcb_window_t m_window;
    bool m_selected = true;
    std::optional<std::uint32_t> m_coreEvents; ///< what Qt selected, once that has been asked for
    std::vector<DeviceMask> m_deviceEvents;
};

} // namespace velmora
