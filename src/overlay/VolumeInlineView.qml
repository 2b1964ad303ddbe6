import QtQuick
import QtQuick.Templates as T
import Velmora.Overlay
import Velmora.Services
import Velmora.Style

// A volume slider, in the place of the slide.
Item {
    id: view

    required property bool isHovered
    required property SystemMonitorService monitor
    required property CollapsedLiveStrip strip

    Binding {
        property: "isVolumeInUse"
        target: view.strip
        value: view.isHovered || slider.pressed
    }
    Symbol {
        id: quiet

        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        color: Qt.rgba(1, 1, 1, 0.4)
        name: "speaker.fill"
        size: 8
    }
    T.Slider {
        id: slider

        Accessible.name: qsTr("Volume")
        anchors {
            bottom: parent.bottom
            left: quiet.right
            leftMargin: 8
            right: loud.left
            rightMargin: 8
            top: parent.top
        }
        value: view.monitor.volume

        background: Rectangle {
            color: Qt.rgba(1, 1, 1, 0.15)
            height: 3
            radius: 1.5
            width: slider.width
            y: (slider.height - height) / 2

            Rectangle {
                color: Qt.rgba(1, 1, 1, 0.7)
                height: parent.height
                radius: 1.5
                width: slider.handle.x + slider.handle.width / 2
            }
        }
        handle: Rectangle {
            antialiasing: true
            color: "white"
            height: 10
            radius: 5
            width: 10
            x: slider.visualPosition * (slider.width - width)
            y: (slider.height - height) / 2
        }

        onMoved: {
            view.monitor.adjustVolume(value - view.monitor.volume);
            // The slider has taken its value away from the sound output's.
            value = Qt.binding(() => view.monitor.volume);
        }
    }
    Symbol {
        id: loud

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        color: Qt.rgba(1, 1, 1, 0.4)
        name: "speaker.wave.3.fill"
        size: 8
    }
}
