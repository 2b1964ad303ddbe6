pragma ComponentBehavior: Bound

import QtQuick
import Velmora.Overlay

// A list of menu lines on a dark card. It scrolls where it is higher than it may be.
Rectangle {
    id: pane

    required property list<statusMenuEntry> entries
    property statusMenuEntry noEntry // for rows of entries that have just gone, and still ask for them
    property int openIndex: -1 // the line whose submenu is on show
    property real maximumHeight: Infinity

    signal chosen(int index)
    signal entered(int index, real lineTop) // of the line within the card

    border.color: Qt.rgba(1, 1, 1, 0.14)
    color: "#1b1b1d"
    height: Math.min(maximumHeight, column.height + 10)

    Flickable {
        id: list

        anchors.fill: parent
        anchors.margins: 5
        boundsBehavior: Flickable.StopAtBounds
        clip: contentHeight > height
        contentHeight: column.height
        interactive: contentHeight > height

        Column {
            id: column

            width: list.width

            Repeater {
                id: rows

                model: pane.entries.length

                StatusMenuRow {
                    required property int index

                    entry: index < pane.entries.length ? pane.entries[index] : pane.noEntry
                    highlighted: hovered || pane.openIndex === index
                    width: column.width

                    onChosen: pane.chosen(index)
                    onEntered: pane.entered(index, y - list.contentY + list.y)
                }
            }
        }
    }
}
