import QtQuick
import Velmora.Style

// One of the things that a Succession shows, one after the other. It comes in from below and leaves
// above, by `travel` points, and takes what it shows from elsewhere only while it is the current one.
Item {
    id: successor

    property bool arrives: false // rather than being there from the start
    property bool isCurrent: true

    property int duration: 250 // milliseconds, unless it is moved by a spring
    property bool isSpringy: false
    property real travel: 0

    readonly property real presence: isSpringy ? spring.value : eased
    property real eased: isPresent ? 1 : 0
    property bool isPresent: !arrives

    function leave() {
        isCurrent = false;
        isPresent = false;
        goOnceInvisible(); // it may not have been seen at all
    }
    function goOnceInvisible() {
        if (!isCurrent && presence <= 0) {
            destroy();
        }
    }

    anchors.fill: parent
    opacity: Math.max(0, Math.min(presence, 1))

    transform: Translate {
        y: (successor.isCurrent ? 1 : -1) * (1 - successor.presence) * successor.travel
    }
    Behavior on eased {
        NumberAnimation {
            duration: successor.duration
            easing.type: Easing.InOutQuad
        }
    }

    Component.onCompleted: isPresent = true
    onPresenceChanged: goOnceInvisible()

    SpringMotion {
        id: spring

        dampingFraction: 0.82
        response: 0.38
        target: successor.isPresent ? 1 : 0
    }
}
