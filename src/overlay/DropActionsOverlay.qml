pragma ComponentBehavior: Bound

import QtQuick
import Velmora.Drop
import Velmora.Overlay
import Velmora.Style

// What the notch shows while files are dragged: a row of actions, and a line of text below them.
// Where a button lies is also known to the controller, which finds the action under the drag.
Item {
    id: view

    required property NotchWindowController controller

    readonly property DropActionsService service: controller.services.dropService

    Column {
        anchors.verticalCenter: parent.verticalCenter
        spacing: 4
        width: parent.width

        Row {
            id: row

            readonly property real slotWidth: (width - (actions.count - 1) * spacing) / Math.max(1, actions.count)

            spacing: 6
            width: parent.width - 2 * 10
            x: 10

            Repeater {
                id: actions

                model: view.service.enabledActions

                DropActionButton {
                    required property string modelData

                    action: modelData
                    isHovered: view.service.hoveredAction === modelData
                    width: row.slotWidth
                }
            }
        }
        NotchText {
            bottomPadding: 4
            color: Qt.rgba(1, 1, 1, 0.4)
            horizontalAlignment: Text.AlignHCenter
            size: 8
            text: view.service.lastStatus !== "" ? view.service.lastStatus : "Drop %1 file(s) on an action".arg(view.service.draggedFiles.length)
            width: parent.width
        }
    }
}
