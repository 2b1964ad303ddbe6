import QtQuick
import Velmora.Overlay
import Velmora.Style

// The root of every overlay window: chooses what fills the notch, and animates the change. It fills
// the frame that it is given; how the frame moves is the controller's business.
Item {
    id: root

    required property NotchWindowController controller
    required property StatusMenu menu

    readonly property bool isDragging: controller.services.dropService.isDragging
    readonly property bool isExpanded: controller.notchState.isExpanded

    anchors.fill: parent

    // One of the things that the notch can show. It lives from the moment it is asked for until it
    // has faded out; asked for again before that, it starts afresh. (Views are loaded by name: 6.4
    // does not let a loader instantiate a component that is bound to this file.)
    component Layer: Loader {
        id: layer

        required property NotchWindowController controller
        required property bool shown
        required property string view
        property real restingScale: 1

        function load() {
            if (shown) {
                setSource(view, {
                    "controller": controller
                });
            }
        }

        active: shown || presence.value > 0
        anchors.fill: parent
        opacity: Math.max(0, Math.min(presence.value, 1))
        scale: restingScale + (1 - restingScale) * presence.value

        Component.onCompleted: load()
        onShownChanged: load()

        SpringMotion {
            id: presence

            dampingFraction: 0.82
            response: 0.3
            target: layer.shown ? 1 : 0
        }
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
            radius: root.isExpanded || root.isDragging ? 12 : root.controller.cornerRadius
            width: Math.ceil(parent.width)
        }
        Layer {
            controller: root.controller
            shown: !root.isExpanded && !root.isDragging
            view: "CollapsedLiveStripView.qml"
        }
        Layer {
            controller: root.controller
            restingScale: 0.97
            shown: root.isExpanded && !root.isDragging
            view: "FiveZoneExpandedView.qml"
        }
        Layer {
            controller: root.controller
            shown: root.isDragging
            view: "DropActionsOverlay.qml"
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
    Loader {
        active: root.controller.services.dropService.openWithMenu.isOpen && root.controller.wasDroppedHere
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
