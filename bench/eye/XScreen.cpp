#include "eye/XScreen.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <xcb/xtest.h>

namespace velmora::bench
{

namespace
{

template<typename Reply>
using ReplyPointer = std::unique_ptr<Reply, decltype(&std::free)>;

template<typename Reply>
ReplyPointer<Reply> own(Reply *reply)
{
    if (reply == nullptr)
        throw std::runtime_error("the X server refused a request or is gone");
    return {reply, &std::free};
}

const xcb_screen_t *screenOfNumber(xcb_connection_t *connection, int number)
{
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 0 && number > 0; --number)
        xcb_screen_next(&screens);
    return screens.rem > 0 ? screens.data : nullptr;
}

} // namespace

XScreen::XScreen(const std::string &display)
{
    int number = 0;
    m_connection.reset(xcb_connect(display.empty() ? nullptr : display.c_str(), &number));
    if (xcb_connection_has_error(m_connection.get()) != 0)
        throw std::runtime_error("no X server at display '" + display + "'");
    m_screen = screenOfNumber(m_connection.get(), number);
    if (m_screen == nullptr || m_screen->root_depth != 24)
        throw std::runtime_error("a screen of 24 bits is needed");
}

Pixels XScreen::capture(const Region &region) const
{
    const auto cookie =
        xcb_get_image(m_connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_screen->root, region.x,
                      region.y, region.width, region.height, ~uint32_t{0});
    const auto reply = own(xcb_get_image_reply(m_connection.get(), cookie, nullptr));
    const size_t count = size_t{region.width} * region.height;
    const auto *data = xcb_get_image_data(reply.get());
    if (static_cast<size_t>(xcb_get_image_data_length(reply.get())) < count * sizeof(uint32_t))
        throw std::runtime_error("a picture of 32 bits a pixel is needed");
    Pixels pixels(count);
    std::memcpy(pixels.data(), data, count * sizeof(uint32_t));
    for (auto &pixel : pixels)
        pixel &= 0xffffffU;
    return pixels;
}

void XScreen::movePointer(int16_t x, int16_t y) const
{
    xcb_test_fake_input(m_connection.get(), XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, m_screen->root,
                        x, y, 0);
}

void XScreen::pressButton(bool isDown) const
{
    xcb_test_fake_input(m_connection.get(), isDown ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, 1,
                        XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
}

void XScreen::flush() const
{
    xcb_flush(m_connection.get());
}

void XScreen::synchronize() const
{
    const auto cookie = xcb_get_input_focus(m_connection.get());
    own(xcb_get_input_focus_reply(m_connection.get(), cookie, nullptr));
}

Region parseRegion(const std::string &text)
{
    Region region;
    int used = 0;
    const int read = std::sscanf(text.c_str(), "%hux%hu+%hd+%hd%n", &region.width, &region.height,
                                 &region.x, &region.y, &used);
    if (read != 4 || static_cast<size_t>(used) != text.size())
        throw std::runtime_error("not a region: " + text);
    return region;
}

} // namespace velmora::bench
