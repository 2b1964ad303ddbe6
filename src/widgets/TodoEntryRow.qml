pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Window
import Velmora.Style
import Velmora.Widgets

// The row in which a new task is typed.
Item {
    id: row

    required property TodoModel todo

    readonly property bool hasText: field.text !== "" || field.preeditText !== ""

    height: 8 + 16.8 + 8

    Component.onCompleted: {
        if (todo.isRowOpened) {
            field.forceActiveFocus();
        }
    }

    KeyboardWish {
        id: keyboard

        visible: field.focus
    }
    StayWish {
        visible: row.hasText
    }
    TextInput {
        id: field

        Accessible.name: prompt.text
        Accessible.role: Accessible.EditableText

        anchors {
            bottom: parent.bottom
            left: parent.left
            leftMargin: 10
            right: button.left
            top: parent.top
        }
        clip: true
        color: "white"
        cursorDelegate: Rectangle {
            color: Style.green
            visible: field.cursorVisible
            width: 1
        }
        font: prompt.font
        renderType: TextInput.NativeRendering
        selectByMouse: true
        selectedTextColor: "white"
        selectionColor: Qt.alpha(Style.blue, 0.5)
        text: row.todo.newTitle
        verticalAlignment: TextInput.AlignVCenter

        Keys.onEscapePressed: row.todo.toggleAdd()
        onAccepted: row.todo.submit()
        onTextChanged: row.todo.newTitle = text

        // A press into the field takes the keyboard again that was given to another window.
        TapHandler {
            onPressedChanged: {
                if (pressed && !field.Window.active) {
                    keyboard.renew();
                }
            }
        }
    }
    NotchText {
        id: prompt

        Accessible.ignored: true

        anchors.fill: field
        color: row.hasText ? "transparent" : Style.hint
        horizontalAlignment: Text.AlignLeft
        size: Style.largeText
        text: qsTr("New task")
    }
    SymbolButton {
        id: button

        anchors.right: parent.right
        anchors.rightMargin: 10 + 16.8 / 2 - width / 2
        anchors.verticalCenter: parent.verticalCenter
        color: row.hasText ? Style.green : Qt.rgba(1, 1, 1, 0.25)
        description: qsTr("Add task")
        height: 24
        size: 14
        symbol: "arrow.up.circle.fill"
        width: 28

        onActivated: row.todo.submit()
    }
}
