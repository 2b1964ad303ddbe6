import QtQuick
import Velmora.Overlay
import Velmora.Style

// One line of the status menu.
Item {
    id: row

    required property statusMenuEntry entry

    readonly property bool hovered: hover.hovered
    property bool highlighted: hovered

    signal chosen
    signal entered

    Accessible.checkable: entry.isChecked
    Accessible.checked: entry.isChecked
    Accessible.ignored: entry.isSeparator
    Accessible.name: entry.title
    Accessible.role: entry.isSeparator ? Accessible.Separator : Accessible.MenuItem
    Accessible.onPressAction: row.chosen()

    height: entry.isSeparator ? 9 : 24

    Rectangle {
        anchors.left: parent.left
        anchors.leftMargin: 8
        anchors.right: parent.right
        anchors.rightMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        color: Style.track
        height: 1
        visible: row.entry.isSeparator
    }
    Rectangle {
        anchors.fill: parent
        color: Qt.rgba(1, 1, 1, 0.16)
        radius: 5
        visible: row.highlighted && !row.entry.isSeparator
    }
    ThemeIcon {
        anchors.left: parent.left
        anchors.leftMargin: 6
        anchors.verticalCenter: parent.verticalCenter
        height: 16
        name: row.entry.iconName
        visible: name !== ""
        width: 16
    }
    Symbol {
        anchors.left: parent.left
        anchors.leftMargin: 7
        anchors.verticalCenter: parent.verticalCenter
        name: "checkmark"
        size: 10
        visible: row.entry.isChecked
    }
    NotchText {
        anchors.left: parent.left
        anchors.leftMargin: 26
        anchors.right: parent.right
        anchors.rightMargin: row.entry.hasSubmenu ? 24 : 9
        anchors.verticalCenter: parent.verticalCenter
        size: 11.5
        text: row.entry.title
    }
    Symbol {
        anchors.right: parent.right
        anchors.rightMargin: 7
        anchors.verticalCenter: parent.verticalCenter
        color: Qt.rgba(1, 1, 1, 0.6)
        name: "chevron.right"
        size: 10
        visible: row.entry.hasSubmenu
    }
    HoverHandler {
        id: hover

        onHoveredChanged: {
            if (hovered) {
                row.entered();
            }
        }
    }
    TapHandler {
        enabled: !row.entry.isSeparator

        onTapped: row.chosen()
    }
}
