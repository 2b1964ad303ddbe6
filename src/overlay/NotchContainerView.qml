import QtQuick
import Velmora.Overlay
import Velmora.Style

// The root of every overlay window: chooses what fills the notch, and animates the change. How the
// notch moves is the controller's business: each thing in it is laid out once, in its final place,
// and the notch reveals it.
Item {
    id: root

    required property NotchWindowController controller
    required property StatusMenu menu

    readonly property notchGeometry geometry: controller.geometry
    readonly property bool isDragging: controller.services.dropService.isDragging
    readonly property bool isExpanded: controller.isExpanded
    readonly property real expansion: Math.max(0, Math.min(spring.value, 1))
    property real dragging: isDragging ? 1 : 0

    anchors.fill: parent

    Behavior on dragging {
        NumberAnimation {
            duration: 200
            easing.type: Easing.InOutQuad
        }
    }
    SpringMotion {
        id: spring

        dampingFraction: 0.82
        response: 0.3
        target: root.isExpanded ? 1 : 0
    }

    // One of the things that the notch can show. It lives from the moment it is asked for until it
    // has faded out; asked for again before that, it starts afresh. (Views are loaded by name: 6.4
    // does not let a loader instantiate a component that is bound to this file.)
    component Layer: Loader {
        required property NotchWindowController controller
        required property rect area // of the window
        required property bool shown
        required property string view

        function load() {
            if (shown) {
                setSource(view, {
                    "controller": controller
                });
            } else if (opacity === 0) {
                setSource("");
            }
        }

        enabled: shown
        height: area.height
        width: area.width
        x: area.x - controller.frame.x
        y: area.y - controller.frame.y

        Component.onCompleted: load()
        onOpacityChanged: {
            if (!shown) {
                load();
            }
        }
        onShownChanged: load()
    }

    Item {
        id: notch

        clip: true
        height: root.controller.frame.height
        width: root.controller.frame.width
        x: root.controller.frame.x
        y: root.controller.frame.y

        // Solid while one layer gives way to the other. In whole points: less than one cannot be
        // painted on.
        BottomRoundedShape {
            height: Math.ceil(parent.height)
            radius: root.isExpanded || root.isDragging ? root.geometry.panelCornerRadius : root.geometry.cornerRadius
            width: Math.ceil(parent.width)
        }
        Layer {
            area: root.geometry.collapsed
            controller: root.controller
            opacity: (1 - root.expansion) * (1 - root.dragging)
            shown: !root.isExpanded && !root.isDragging
            view: "CollapsedLiveStripView.qml"
        }
        Layer {
            area: root.geometry.panel
            controller: root.controller
            opacity: root.expansion * (1 - root.dragging)
            scale: 0.97 + 0.03 * opacity
            shown: root.isExpanded && !root.isDragging
            view: "FiveZoneExpandedView.qml"
        }
        Layer {
            area: root.geometry.panel
            controller: root.controller
            opacity: root.dragging
            shown: root.isDragging
            view: "DropActionsOverlay.qml"
            visible: root.isExpanded // a piece of it would be all that has room
        }
    }

    TapHandler {
        acceptedButtons: Qt.RightButton
        gesturePolicy: TapHandler.ReleaseWithinBounds

        onTapped: (eventPoint, button) => {
            // Of a touch screen, which knows no buttons, everything comes; and Qt takes the mouse for one on
            // Wayland if the seat has both.
            if (button !== Qt.RightButton) {
                return;
            }
            if (menuLoader.status !== Loader.Ready) {
                menuLoader.setSource("StatusMenuView.qml", {
                    "controller": root.controller,
                    "menu": root.menu
                });
            }
            (menuLoader.item as StatusMenuView).openAt(eventPoint.position);
        }
    }
    Connections {
        function onPressedElsewhere() {
            root.menu.dismissed();
        }

        target: root.controller
    }
    Loader {
        active: root.controller.isOpenWithShown
        anchors.fill: parent

        Component.onCompleted: setSource("OpenWithMenuView.qml", {
            "controller": root.controller
        })
    }
    // Most people never ask for it here: it is built when somebody does.
    Loader {
        id: menuLoader

        anchors.fill: parent
    }
}
