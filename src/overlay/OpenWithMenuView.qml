import QtQuick
import Velmora.Drop
import Velmora.Overlay

// The applications that dropped files can be opened with, at the place of the drop. Like the status
// menu it is part of the scene.
Item {
    id: view

    required property NotchWindowController controller

    readonly property OpenWithMenu menu: controller.services.dropService.openWithMenu
    readonly property bool isOpen: menu.isOpen && controller.wasDroppedHere

    anchors.fill: parent
    visible: isOpen

    Component.onDestruction: {
        if (isOpen) {
            menu.dismiss();
        }
    }
    onIsOpenChanged: {
        if (isOpen) {
            card.x = Math.max(0, Math.min(controller.dropPosition.x - 20, width - card.width));
            card.y = Math.max(0, Math.min(controller.dropPosition.y - 10, height - card.height));
            view.controller.menuFrame = Qt.rect(card.x, card.y, card.width, card.height);
        } else {
            view.controller.menuFrame = Qt.rect(0, 0, 0, 0);
        }
    }

    OpenWithEntries {
        id: applications

        menu: view.menu
    }
    Connections {
        function onIsExpandedChanged() {
            if (view.isOpen) {
                view.menu.dismiss();
            }
        }

        target: view.controller.notchState
    }
    // A press beside the menu closes it and does nothing else.
    TapHandler {
        acceptedButtons: Qt.LeftButton | Qt.RightButton

        onTapped: view.menu.dismiss()
    }
    StatusMenuPane {
        id: card

        entries: applications.entries
        maximumHeight: view.height
        width: 210

        onChosen: index => view.menu.openWithApp(index)
    }
}
