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
        color: Style.label
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

        background: RoundedRectangle {
            color: Qt.rgba(1, 1, 1, 0.15)
            fill: Style.fill
            height: 3
            value: (slider.handle.x + slider.handle.width / 2) / Math.max(1, width)
            width: slider.width
            y: (slider.height - height) / 2
        }
        handle: RoundedRectangle {
            height: 10
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
        color: Style.label
        name: "speaker.wave.3.fill"
        size: 8
    }
}
