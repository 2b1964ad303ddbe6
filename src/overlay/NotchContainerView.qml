import QtQuick
import Velmora.Overlay
import Velmora.Style

// The root of every overlay window: chooses what fills the notch, and animates the change. It fills
// the frame that it is given; how the frame moves is the controller's business.
Item {
    id: root

    required property NotchWindowController controller
    required property StatusMenu menu

    readonly property bool isExpanded: controller.notchState.isExpanded

    anchors.fill: parent

    SpringMotion {
        id: spring

        dampingFraction: 0.82
        response: 0.3
    }

    // One of the things that the notch can show. It lives from the moment it is asked for until it
    // has faded out; asked for again before that, it starts afresh.
    component Layer: Loader {
        id: layer

        property bool shown: false
        property real restingScale: 1
        property real presence: shown ? 1 : 0

        active: shown || presence > 0
        anchors.fill: parent
        opacity: Math.min(presence, 1)
        scale: restingScale + (1 - restingScale) * presence

        Behavior on presence {
            NumberAnimation {
                duration: spring.duration
                easing.bezierCurve: spring.curve
                easing.type: Easing.BezierSpline
            }
        }

        onShownChanged: {
            if (shown && status === Loader.Ready) {
                const component = sourceComponent;
                sourceComponent = null;
                sourceComponent = component;
            }
        }
    }

    Item {
        id: notch

        clip: true
        height: root.controller.frame.height
        width: root.controller.frame.width
        x: root.controller.frame.x
        y: root.controller.frame.y

        // Solid while one layer gives way to the other.
        BottomRoundedShape {
            anchors.fill: parent
            radius: root.isExpanded ? 12 : root.controller.cornerRadius
        }
        Layer {
            shown: !root.isExpanded

            sourceComponent: CollapsedLiveStripView {}
        }
        Layer {
            restingScale: 0.97
            shown: root.isExpanded

            sourceComponent: FiveZoneExpandedView {
                controller: root.controller
            }
        }
    }

    TapHandler {
        acceptedButtons: Qt.RightButton
        gesturePolicy: TapHandler.ReleaseWithinBounds

        onTapped: eventPoint => {
            menuLoader.active = true;
            (menuLoader.item as StatusMenuView).openAt(eventPoint.position);
        }
    }
    // Most people never ask for it here: it is built when somebody does.
    Loader {
        id: menuLoader

        active: false
        anchors.fill: parent

        sourceComponent: StatusMenuView {
            controller: root.controller
            menu: root.menu
        }
    }
}
