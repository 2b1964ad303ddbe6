import QtQuick

// The hairline between two zones.
Item {
    Rectangle {
        anchors.fill: parent
        anchors.bottomMargin: 10
        anchors.topMargin: 10
        color: Qt.rgba(1, 1, 1, 0.07)
    }
}
