import QtQuick
import Velmora.Drop
import Velmora.Overlay

// The applications that dropped files can be opened with, at the place of the drop. Like the status
// menu it is part of the scene.
Item {
    id: view

    required property NotchWindowController controller

    readonly property OpenWithMenu menu: controller.services.dropService.openWithMenu

    anchors.fill: parent

    Component.onDestruction: {
        controller.menuFrame = Qt.rect(0, 0, 0, 0);
        menu.dismiss(); // whoever waits for a choice is not to wait for ever
    }

    Binding {
        property: "menuFrame"
        target: view.controller
        value: Qt.rect(card.x, card.y, card.width, card.height)
    }
    OpenWithEntries {
        id: applications

        menu: view.menu
    }
    Connections {
        function onIsExpandedChanged() {
            view.menu.dismiss();
        }

        target: view.controller.notchState
    }
    // A press beside the menu closes it and does nothing else.
    TapHandler {
        acceptedButtons: Qt.LeftButton | Qt.RightButton

        onTapped: applications.dismiss()
    }
    StatusMenuPane {
        id: card

        entries: applications.entries
        maximumHeight: view.height
        width: 240
        x: Math.max(0, Math.min(view.controller.dropPosition.x - 20, view.width - width))
        y: Math.max(0, Math.min(view.controller.dropPosition.y - 10, view.height - height))

        onChosen: index => applications.choose(index)
    }
}
