pragma ComponentBehavior: Bound

import QtQuick
import Velmora.Services
import Velmora.Style
import Velmora.Widgets

// The tasks that are still to be done; in their place the trash, or the row for a new one.
Item {
    id: view

    required property TodoService service

    property todoItem noItem // for rows that are about to go

    function item(row: int): todoItem {
        return row < todo.rows.length ? todo.rows[row] : noItem;
    }

    // The first of a list, and how many more there are.
    component Rows: Column {
        id: rows

        required property Component delegate

        bottomPadding: 5
        spacing: 3
        topPadding: 5
        width: view.width - 20
        x: 10

        Repeater {
            delegate: rows.delegate
            model: rows.visible ? todo.rows.length : 0
        }
        NotchText {
            color: Style.placeholder
            horizontalAlignment: Text.AlignHCenter
            size: Style.smallText
            text: todo.more
            visible: text !== ""
            width: parent.width
        }
    }

    TodoModel {
        id: todo

        service: view.service
    }
    Item {
        id: header

        height: 6 + 16
        width: parent.width

        NotchText {
            anchors.bottom: parent.bottom
            anchors.left: parent.left
            anchors.leftMargin: 10
            color: Style.label
            font.weight: Font.DemiBold
            height: 16
            size: Style.text
            text: qsTr("Todo")
        }
        SymbolButton {
            id: trash

            anchors.right: add.left
            color: Style.hint
            description: todo.showingTrash ? qsTr("Show tasks") : qsTr("Show trash")
            height: 24
            size: 9
            symbol: "trash"
            width: 28
            y: add.y

            onActivated: todo.toggleTrash()
        }
        SymbolButton {
            id: add

            anchors.right: parent.right
            anchors.rightMargin: 4
            color: Style.green
            description: todo.showingAdd ? qsTr("Discard") : qsTr("New task")
            height: 24
            size: 9
            symbol: todo.showingAdd ? "xmark" : "plus"
            width: 28
            y: 6 + 8 - height / 2

            onActivated: todo.toggleAdd()
        }
    }
    Item {
        id: body

        anchors {
            bottom: parent.bottom
            left: parent.left
            right: parent.right
            top: header.bottom
        }

        Loader {
            active: todo.body === TodoModel.EntryRow
            width: parent.width

            Component.onCompleted: setSource("TodoEntryRow.qml", {
                "todo": todo
            })
        }
        Rows {
            delegate: TodoRowView {
                required property int index

                item: view.item(index)
                width: parent ? parent.width : 0

                onCompleted: todo.complete(index)
                onDeleted: todo.deleteItem(index)
            }
            visible: todo.body === TodoModel.Tasks
        }
        Rows {
            delegate: Item {
                id: trashed

                required property int index

                height: 13
                width: parent ? parent.width : 0

                NotchText {
                    anchors.left: parent.left
                    anchors.right: restore.left
                    anchors.verticalCenter: parent.verticalCenter
                    color: Qt.rgba(1, 1, 1, 0.45)
                    horizontalAlignment: Text.AlignLeft
                    size: Style.text
                    text: view.item(trashed.index).title
                }
                SymbolButton {
                    id: restore

                    anchors.right: parent.right
                    anchors.rightMargin: -7
                    anchors.verticalCenter: parent.verticalCenter
                    color: Style.blue
                    description: qsTr("Restore %1").arg(view.item(trashed.index).title)
                    height: 16
                    size: 9
                    symbol: "arrow.uturn.left"
                    width: 26

                    onActivated: todo.restore(trashed.index)
                }
            }
            visible: todo.body === TodoModel.Trash
        }
        WidgetStatus {
            anchors.verticalCenter: parent.verticalCenter
            spacing: 3
            symbol: "checklist"
            symbolColor: Style.hint
            symbolSize: 14
            text: qsTr("Grant Reminders Access")
            textColor: Style.label
            textSize: Style.smallText
            visible: todo.body === TodoModel.Unauthorized
            width: parent.width
        }
        WidgetStatus {
            anchors.verticalCenter: parent.verticalCenter
            spacing: 3
            symbol: "checkmark.circle"
            symbolColor: Qt.alpha(Style.green, 0.6)
            symbolSize: 14
            text: qsTr("All done!")
            textColor: Style.hint
            visible: todo.body === TodoModel.AllDone
            width: parent.width
        }
    }
}
