pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic

// The question of a first launch. A window like any other: it takes the keyboard, closing it is the
// same as "Not Now", and the notch goes on working beside it.
Window {
    id: alert

    signal accepted
    signal finished

    readonly property string message: qsTr("Launch Velmora at Login?")

    function finish(agreed: bool) {
        if (agreed) {
            accepted();
        }
        close();
    }

    component Choice: Button {
        id: choice

        property bool isDefault: false

        Accessible.name: text
        font.family: "Inter"
        font.pixelSize: 13
        leftPadding: 16
        rightPadding: 16

        background: Rectangle {
            border.color: choice.activeFocus ? "#8cc8ff" : Qt.rgba(1, 1, 1, 0.14)
            border.width: choice.activeFocus ? 2 : 1
            color: choice.isDefault ? (choice.down ? "#0a62c4" : "#0b74e5") : (choice.down ? "#4a4a4e" : "#3a3a3d")
            implicitHeight: 32
            radius: 7
        }
        contentItem: Text {
            color: "white"
            font: choice.font
            horizontalAlignment: Text.AlignHCenter
            text: choice.text
            verticalAlignment: Text.AlignVCenter
        }

        Keys.onEnterPressed: clicked()
        Keys.onReturnPressed: clicked()
    }

    color: "#262628"
    flags: Qt.Dialog
    height: content.height + 44
    maximumHeight: height
    maximumWidth: width
    minimumHeight: height
    minimumWidth: width
    title: "Velmora"
    width: 440

    onClosing: finished()

    Column {
        id: content

        Accessible.name: alert.message
        Accessible.role: Accessible.AlertMessage
        anchors.centerIn: parent
        focus: true
        spacing: 10
        width: alert.width - 48

        Keys.onEscapePressed: alert.finish(false)

        Text {
            color: "white"
            font.family: "Inter"
            font.pixelSize: 15
            font.weight: Font.DemiBold
            text: alert.message
            width: parent.width
            wrapMode: Text.WordWrap
        }
        Text {
            bottomPadding: 10
            color: Qt.rgba(1, 1, 1, 0.75)
            font.family: "Inter"
            font.pixelSize: 13
            lineHeight: 1.2
            text: qsTr("Velmora lives in your menu bar. Would you like it to start automatically every time you log in?")
            width: parent.width
            wrapMode: Text.WordWrap
        }
        Row {
            anchors.right: parent.right
            spacing: 10

            Choice {
                id: decline

                KeyNavigation.tab: accept
                text: qsTr("Not Now")

                onClicked: alert.finish(false)
            }
            Choice {
                id: accept

                KeyNavigation.tab: decline
                focus: true
                isDefault: true
                text: qsTr("Yes, Launch at Login")

                onClicked: alert.finish(true)
            }
        }
    }
    Component.onCompleted: accept.forceActiveFocus()
}
