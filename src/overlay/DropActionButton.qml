import QtQuick
import Velmora.Drop
import Velmora.Style

// One drop action, larger and in its colour while the drag is over it. It only shows: the drag goes
// to the window.
Item {
    id: button

    required property string action
    required property real growth // on each side, at most
    required property bool isHovered

    readonly property real enlargement: Math.min(0.06, 2 * growth / width) * glow.part

    function mix(from: color, to: color, part: real): color {
        return Qt.rgba(from.r + (to.r - from.r) * part, from.g + (to.g - from.g) * part, from.b + (to.b - from.b) * part, from.a + (to.a - from.a) * part);
    }

    Accessible.name: info.label
    Accessible.role: Accessible.ListItem
    Accessible.selected: isHovered

    height: 6 + 24 + 3 + name.implicitHeight + 6

    DropActionInfo {
        id: info

        action: button.action
    }
    SpringMotion {
        id: glow

        readonly property real part: Math.max(0, Math.min(value, 1))

        dampingFraction: 0.7
        response: 0.2
        target: button.isHovered ? 1 : 0
    }
    // What is scaled loses its smooth corners: this one is enlarged.
    RoundedRectangle {
        anchors.centerIn: parent
        color: button.mix(Qt.rgba(1, 1, 1, 0.05), Qt.alpha(info.color, 0.18), glow.part)
        height: parent.height * (1 + button.enlargement)
        radius: 8
        width: parent.width * (1 + button.enlargement)
    }
    Item {
        anchors.fill: parent
        scale: 1 + button.enlargement

        Symbol {
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.verticalCenter: parent.top
            anchors.verticalCenterOffset: 6 + 24 / 2
            color: button.mix(Qt.rgba(1, 1, 1, 0.65), info.color, glow.part)
            name: info.symbol
            size: 13 + 3 * glow.value
        }
        NotchText {
            id: name

            anchors {
                left: parent.left
                leftMargin: 2
                right: parent.right
                rightMargin: 2
                top: parent.top
                topMargin: 6 + 24 + 3
            }
            color: button.mix(Qt.rgba(1, 1, 1, 0.45), info.color, glow.part)
            font.weight: button.isHovered ? Font.DemiBold : Font.Normal
            horizontalAlignment: Text.AlignHCenter
            size: 7
            text: info.label
        }
    }
}
