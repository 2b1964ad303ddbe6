import QtQuick
import Velmora.Style

// A small horizontal gauge. The height is given by its user.
RoundedRectangle {
    required fill
    required value

    color: Qt.rgba(1, 1, 1, 0.1)
}
