import QtQuick
import Velmora.Overlay
import Velmora.Style

// What the notch shows while it is collapsed: one live item at a time, or the volume, and at times a
// notice over it. With nothing to say it is a plain black shape, which the container draws.
Item {
    id: view

    required property NotchWindowController controller

    readonly property notchGeometry geometry: controller.geometry
    readonly property bool hasRow: live.slideCount > 0 && !live.showVolume && !live.hasNotice

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

        missedStatus: view.controller.missedStatus
        services: view.controller.services
    }
    Layer {
        id: row

        anchors.leftMargin: 10
        anchors.rightMargin: button.width
        duration: 200
        shown: view.hasRow

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
            "isHovered": Qt.binding(() => view.controller.isPointerOver),
            "monitor": view.controller.services.systemMonitor,
            "strip": live
        })
    }
    Layer {
        duration: 300
        shown: live.hasNotice

        Component.onCompleted: setSource("LiveNoticeView.qml", {
            "strip": live
        })
    }
    // The slider comes by it, and goes by the same place.
    Item {
        id: button

        Accessible.checkable: true
        Accessible.checked: live.showVolume
        Accessible.ignored: !enabled
        Accessible.name: qsTr("Volume")
        Accessible.role: Accessible.Button
        Accessible.onPressAction: live.showVolume = !live.showVolume

        anchors.bottom: parent.bottom
        anchors.right: parent.right
        anchors.top: parent.top
        enabled: view.hasRow || live.showVolume
        width: view.geometry.stripButton.width

        Symbol {
            anchors.centerIn: parent
            color: Style.hint
            name: "speaker.fill"
            opacity: row.opacity
            size: 8
        }
        TapHandler {
            onTapped: live.showVolume = !live.showVolume
        }
    }
    Binding {
        property: "quietArea"
        target: view.controller
        value: live.showVolume ? view.geometry.collapsed : view.hasRow ? view.geometry.stripButton : Qt.rect(0, 0, 0, 0)
    }
}
