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

    Component.onDestruction: controller.menuFrame = Qt.rect(0, 0, 0, 0)

    Binding {
        property: "menuFrame"
        target: view.controller
        value: Qt.rect(card.x, card.y, card.width, card.height)
    }
    StatusMenuPane {
        id: card

        entries: view.controller.openWithEntries
        maximumHeight: view.height
        radius: view.controller.geometry.menuCornerRadius
        width: Math.min(240, view.width)
        x: Math.max(0, Math.min(view.controller.dropPosition.x - 20, view.width - width))
        y: Math.max(0, Math.min(view.controller.dropPosition.y - 10, view.height - height))

        // Later: it takes down this view.
        onChosen: index => Qt.callLater(view.menu.openWithApp, index)
    }
}
