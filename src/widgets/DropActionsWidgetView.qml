pragma ComponentBehavior: Bound

import QtQuick
import Velmora.Drop
import Velmora.Style
import Velmora.Widgets

// A reminder of what can be done with files that are dragged here. It takes no clicks and no drops.
Item {
    id: view

    required property DropActionsService service
    /// As many columns as have room, at least so wide.
    property real minimumColumnWidth: 28
    property real columnSpacing: 6

    component Tile: Column {
        id: tile

        required property string modelData

        spacing: 2
        width: grid.columnWidth

        DropActionInfo {
            id: info

            action: tile.modelData
        }
        RoundedRectangle {
            anchors.horizontalCenter: parent.horizontalCenter
            color: Qt.alpha(info.color, 0.12)
            height: 22
            radius: 6
            width: 22

            Symbol {
                anchors.centerIn: parent
                color: info.color
                name: info.symbol
                size: 11
            }
        }
        NotchText {
            anchors.horizontalCenter: parent.horizontalCenter
            color: Style.label
            height: 8 // whatever the font is rounded to: two rows of tiles fill the zone exactly
            horizontalAlignment: Text.AlignHCenter
            size: 6.5
            text: info.label
            // A long name may use the space between the columns: those beside it are short.
            width: Math.min(implicitWidth, grid.columnWidth + 2 * view.columnSpacing)
        }
    }

    component Header: WidgetHeader {
        note: qsTr("%1 enabled").arg(view.service.enabledActions.length)
        noteColor: Qt.rgba(1, 1, 1, 0.25)
        title: qsTr("Drop Actions")
    }

    Header {
        id: emptyHeader

        visible: !content.visible
        width: parent.width
    }
    NotchText {
        anchors {
            bottom: parent.bottom
            left: parent.left
            right: parent.right
            top: emptyHeader.bottom
        }
        color: Style.placeholder
        horizontalAlignment: Text.AlignHCenter
        size: Style.text
        text: qsTr("No actions enabled")
        visible: !content.visible
    }

    Column {
        id: content

        spacing: 4
        visible: view.service.enabledActions.length > 0
        width: parent.width
        // In the middle; what is too tall loses its lower end, not its header.
        y: Math.max(0, (parent.height - height) / 2)

        Header {
            width: parent.width
        }
        Grid {
            id: grid

            readonly property real columnWidth: (width - (columns - 1) * columnSpacing) / columns

            columnSpacing: view.columnSpacing
            columns: Math.max(1, Math.floor((width + columnSpacing) / (view.minimumColumnWidth + columnSpacing)))
            rowSpacing: 5
            width: parent.width - 20
            x: 10

            Repeater {
                model: view.service.enabledActions

                Tile {}
            }
        }
        Row {
            anchors.horizontalCenter: parent.horizontalCenter
            bottomPadding: 5
            spacing: 3

            Symbol {
                anchors.verticalCenter: hint.verticalCenter
                color: Style.dim
                name: "arrow.down.to.line"
                size: 7
            }
            NotchText {
                id: hint

                color: Style.dim
                size: Style.tinyText
                text: qsTr("Drag files onto the notch")
            }
        }
    }
}
