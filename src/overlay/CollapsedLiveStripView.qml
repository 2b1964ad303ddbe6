import QtQuick
import Velmora.Overlay

// What the notch shows while it is collapsed: nothing yet but its black shape, which the container
// draws.
Item {
    required property NotchWindowController controller
}
