import QtQuick
import Velmora.Services
import Velmora.Style
import Velmora.Widgets

// One task: a circle that completes it, its title, and under the pointer a button that deletes it.
Item {
    id: row

    required property todoItem item

    readonly property bool hovered: hover.hovered

    signal completed
    signal deleted

    height: 13

    MotionWish {}
    HoverHandler {
        id: hover
    }
    SymbolButton {
        id: circle

        anchors.verticalCenter: parent.verticalCenter
        color: row.item.isCompleted ? Style.green : Qt.rgba(1, 1, 1, 0.45)
        description: qsTr("Complete %1").arg(row.item.title)
        height: 16 // up to the next row
        size: 12
        symbol: row.item.isCompleted ? "checkmark.circle.fill" : "circle"
        width: 26
        x: (14.4 - width) / 2

        onActivated: row.completed()
    }
    NotchText {
        anchors.left: parent.left
        anchors.leftMargin: 14.4 + 6
        anchors.right: bin.visible ? bin.left : parent.right
        anchors.verticalCenter: parent.verticalCenter
        color: row.item.isCompleted ? Style.hint : Style.strong
        font.strikeout: row.item.isCompleted
        horizontalAlignment: Text.AlignLeft
        size: Style.largeText
        text: row.item.title
    }
    SymbolButton {
        id: bin

        anchors.right: parent.right
        anchors.rightMargin: -7
        anchors.verticalCenter: parent.verticalCenter
        color: Style.label
        description: qsTr("Delete %1").arg(row.item.title)
        enabled: row.hovered
        height: 16
        opacity: row.hovered ? 1 : 0
        size: 9
        symbol: "trash"
        visible: opacity > 0
        width: 26

        Behavior on opacity {
            NumberAnimation {
                duration: 150
                easing.type: Easing.InOutQuad
            }
        }

        onActivated: row.deleted()
    }
}
