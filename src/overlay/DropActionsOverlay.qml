pragma ComponentBehavior: Bound

import QtQuick
import Velmora.Drop
import Velmora.Overlay
import Velmora.Style

// What the notch shows while files are dragged: a row of actions, and a line of text below them.
Item {
    id: view

    required property NotchWindowController controller

    readonly property notchGeometry geometry: controller.geometry
    readonly property DropActionsService service: controller.services.dropService

    Column {
        anchors.verticalCenter: parent.verticalCenter
        spacing: 4
        width: parent.width

        Row {
            spacing: view.geometry.dropSpacing
            x: view.geometry.dropRowPadding

            Repeater {
                id: actions

                model: view.service.enabledActions

                DropActionButton {
                    required property string modelData

                    action: modelData
                    growth: view.geometry.dropSpacing / 2
                    isHovered: view.service.hoveredAction === modelData
                    width: view.geometry.dropSlotWidth(actions.count)
                }
            }
        }
        NotchText {
            bottomPadding: 4
            color: Style.label
            horizontalAlignment: Text.AlignHCenter
            size: Style.smallText
            text: view.service.lastStatus !== "" ? view.service.lastStatus : "Drop %1 file(s) on an action".arg(view.service.draggedFiles.length)
            width: parent.width
        }
    }
}
