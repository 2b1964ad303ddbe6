import QtQuick
import Velmora.Overlay

// What the notch shows while it is collapsed: one live item at a time, or the volume, and at times a
// notice over it. With nothing to say it is a plain black shape, which the container draws.
Item {
    id: view

    required property NotchWindowController controller

    // One of the things in the strip. It is built when it is first shown and dropped when it has
    // faded out.
    component Layer: Loader {
        id: layer

        required property int duration
        required property bool shown

        active: shown || opacity > 0
        anchors.fill: parent
        enabled: shown
        opacity: shown ? 1 : 0

        Behavior on opacity {
            NumberAnimation {
                duration: layer.duration
                easing.type: Easing.InOutQuad
            }
        }
    }

    CollapsedLiveStrip {
        id: live

        services: view.controller.services
    }
    Layer {
        anchors.leftMargin: 10
        anchors.rightMargin: 10
        duration: 200
        shown: live.slideCount > 0 && !live.showVolume && !live.hasNotice

        Component.onCompleted: setSource("LiveSlideRow.qml", {
            "strip": live
        })
    }
    Layer {
        anchors.leftMargin: 12
        anchors.rightMargin: 12
        duration: 200
        shown: live.showVolume

        Component.onCompleted: setSource("VolumeInlineView.qml", {
            "monitor": view.controller.services.systemMonitor
        })
    }
    Layer {
        duration: 300
        shown: live.hasNotice

        Component.onCompleted: setSource("LiveNoticeView.qml", {
            "strip": live
        })
    }
}
