import QtQuick

// The least that any program of this kind can cost: one window, one text, one timer.
Window {
    id: floor

    property int seconds: 0

    width: 200
    height: 36
    x: Math.round((Screen.width - width) / 2)
    y: 0
    minimumWidth: width
    minimumHeight: height
    maximumWidth: width
    maximumHeight: height
    color: "black"
    flags: Qt.FramelessWindowHint | Qt.BypassWindowManagerHint
    visible: true

    Text {
        anchors.centerIn: parent
        color: "white"
        font.pixelSize: 13
        text: floor.seconds
    }

    Timer {
        interval: 1000
        repeat: true
        running: true
        onTriggered: floor.seconds += 1
    }
}
