#include "platform/linux/x11/MotionSelection.h"

#include "platform/linux/x11/X11Connection.h"

#include <algorithm>
#include <cstring>
#include <xcb/xinput.h>

namespace velmora
{

MotionSelection::MotionSelection(xcb_connection_t *connection, xcb_window_t window)
    : m_connection(connection)
    , m_window(window)
{
}

void MotionSelection::setSelected(bool selected)
{
    if (m_selected == selected)
        return;
    if (!m_coreEvents)
        remember();
    if (!m_coreEvents)
        return;
    m_selected = selected;

    // Both kinds: what is not selected by the input extension would come as a core event.
    constexpr std::uint32_t coreMotion =
        XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_BUTTON_MOTION;
    const std::uint32_t core = selected ? *m_coreEvents : *m_coreEvents & ~coreMotion;
    xcb_change_window_attributes(m_connection, m_window, XCB_CW_EVENT_MASK, &core);
    for (DeviceMask mask : m_deviceEvents) {
        if (!selected)
            mask.events.front() &= ~std::uint32_t(XCB_INPUT_XI_EVENT_MASK_MOTION);
        selectOnDevice(mask);
    }
    xcb_flush(m_connection);
}

void MotionSelection::remember()
{
    const auto coreCookie = xcb_get_window_attributes(m_connection, m_window);
    const XcbPtr<xcb_get_window_attributes_reply_t> core(
        xcb_get_window_attributes_reply(m_connection, coreCookie, nullptr));
    if (!core)
        return;
    m_coreEvents = core->your_event_mask;

    const auto *extension = xcb_get_extension_data(m_connection, &xcb_input_id);
    if (!extension || !extension->present)
        return;
    const auto deviceCookie = xcb_input_xi_get_selected_events(m_connection, m_window);
    const XcbPtr<xcb_input_xi_get_selected_events_reply_t> devices(
        xcb_input_xi_get_selected_events_reply(m_connection, deviceCookie, nullptr));
    if (!devices)
        return;
    auto mask = xcb_input_xi_get_selected_events_masks_iterator(devices.get());
    for (; mask.rem > 0; xcb_input_event_mask_next(&mask)) {
        const std::uint32_t *words = xcb_input_event_mask_mask(mask.data);
        if (mask.data->mask_len > 0)
            m_deviceEvents.push_back({mask.data->deviceid, {words, words + mask.data->mask_len}});
    }
}

void MotionSelection::selectOnDevice(const DeviceMask &mask) const
{
    // All of its words: the server refuses a part of what belongs together, such as the gestures.
    const xcb_input_event_mask_t header{mask.device, std::uint16_t(mask.events.size())};
    std::vector<std::uint32_t> selection(1 + mask.events.size());
    std::memcpy(selection.data(), &header, sizeof header);
    std::ranges::copy(mask.events, selection.begin() + 1);
    xcb_input_xi_select_events(m_connection, m_window, 1,
                               reinterpret_cast<const xcb_input_event_mask_t *>(selection.data()));
}

} // namespace velmora
