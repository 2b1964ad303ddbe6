import QtQuick
import Velmora.Style

// A symbol to press, without any frame around it.
Item {
    id: button

    required property string description // for those who do not see the symbol
    required property real size
    required property string symbol

    signal activated

    Accessible.name: description
    Accessible.role: Accessible.Button

    Accessible.onPressAction: button.activated()

    Symbol {
        anchors.centerIn: parent
        color: Qt.rgba(1, 1, 1, tap.pressed ? 0.4 : 0.75)
        name: button.symbol
        size: button.size
    }
    TapHandler {
        id: tap

        gesturePolicy: TapHandler.ReleaseWithinBounds

        onTapped: button.activated()
    }
}
