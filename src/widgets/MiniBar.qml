import QtQuick

// A small horizontal gauge. `value` is limited to 0 to 1; the height is given by its user.
Rectangle {
    id: bar

    required property real value
    required property color fill

    color: Qt.rgba(1, 1, 1, 0.1)
    radius: height / 2

    Rectangle {
        color: bar.fill
        height: parent.height
        radius: height / 2
        width: parent.width * Math.max(0, Math.min(1, bar.value))
    }
}
