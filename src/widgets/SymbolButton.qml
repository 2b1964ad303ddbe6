import QtQuick
import Velmora.Style

// A symbol to press, without any frame around it until the pointer is over it.
Item {
    id: button

    required property string description // for those who do not see the symbol
    required property real size
    required property string symbol

    property color color: Style.control

    signal activated

    Accessible.name: description
    Accessible.role: Accessible.Button

    Accessible.onPressAction: button.activated()

    RoundedRectangle {
        anchors.fill: parent
        color: Style.track
        radius: 6
        visible: hover.hovered
    }
    Symbol {
        anchors.centerIn: parent
        color: tap.pressed ? Style.label : hover.hovered ? "white" : button.color
        name: button.symbol
        size: button.size
    }
    MotionWish {}
    HoverHandler {
        id: hover
    }
    TapHandler {
        id: tap

        gesturePolicy: TapHandler.ReleaseWithinBounds

        onTapped: button.activated()
    }
}
