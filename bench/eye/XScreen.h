#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace velmora::bench
{

/// A part of the screen, in pixels of the root window.
struct Region {
    int16_t x = 0;
    int16_t y = 0;
    uint16_t width = 0;
    uint16_t height = 0;
};

/// Colours (0xRRGGBB) row by row.
using Pixels = std::vector<uint32_t>;

/// A third party in front of the screen: sees what is shown, moves the pointer, and knows nothing
/// of the program that is measured. Throws std::runtime_error when the server does not answer.
class XScreen
{
public:
    /// Connects to the display of this name; an empty name takes it from the environment.
    explicit XScreen(const std::string &display);

    [[nodiscard]] uint16_t width() const { return m_screen->width_in_pixels; }

    /// Takes a picture. `region` has to lie within the screen; one round trip.
    [[nodiscard]] Pixels capture(const Region &region) const;

    /// Moves the pointer as a real device would; sent with the next `flush` or `capture`.
    void movePointer(int16_t x, int16_t y) const;

    /// Presses or releases the first button, likewise.
    void pressButton(bool isDown) const;

    void flush() const;

    /// Waits until the server has worked through everything that was sent.
    void synchronize() const;

private:
    struct Disconnect {
        void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
    };

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    const xcb_screen_t *m_screen = nullptr; ///< owned by the connection
};

/// Reads WIDTHxHEIGHT+X+Y. Throws std::runtime_error on anything else.
[[nodiscard]] Region parseRegion(const std::string &text);

} // namespace velmora::bench
