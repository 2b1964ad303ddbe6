import QtQuick
import Velmora.Overlay

// The status menu over the notch. A popup window of its own is not to be had on every window system,
// so it is part of the scene; its place is told to the controller, which opens the window there.
Item {
    id: view

    required property NotchWindowController controller
    required property StatusMenu menu

    readonly property rect cardFrame: Qt.rect(card.x, card.y, card.width, card.height)
    readonly property rect frame: {
        if (!visible) {
            return Qt.rect(0, 0, 0, 0);
        }
        if (!submenuCard.visible) {
            return cardFrame;
        }
        const top = Math.min(card.y, submenuCard.y);
        const bottom = Math.max(card.y + card.height, submenuCard.y + submenuCard.height);
        return Qt.rect(card.x, top, submenuCard.x + submenuCard.width - card.x, bottom - top);
    }

    function openAt(position: point) {
        card.openIndex = -1;
        card.x = Math.max(0, Math.min(position.x, width - card.width - submenuCard.width));
        card.y = Math.max(0, Math.min(position.y, height - card.height));
        visible = true;
    }

    anchors.fill: parent
    visible: false

    onFrameChanged: controller.menuFrame = frame

    Connections {
        function onIsExpandedChanged() {
            view.visible = false;
        }

        target: view.controller.notchState
    }
    // A press beside the menu closes it and does nothing else.
    TapHandler {
        onTapped: view.visible = false
    }
    StatusMenuPane {
        id: card

        entries: view.menu.entries
        maximumHeight: view.height
        width: 210

        onChosen: index => {
            if (!entries[index].hasSubmenu) {
                view.visible = false;
                view.menu.trigger(index);
            }
        }
        onEntered: index => openIndex = entries[index].hasSubmenu ? index : -1
    }
    StatusMenuPane {
        id: submenuCard

        entries: view.menu.submenu(card.openIndex)
        maximumHeight: view.height
        visible: card.openIndex >= 0 && entries.length > 0
        width: 180
        x: card.x + card.width - 4
        y: Math.max(0, Math.min(card.y + card.rowTop(card.openIndex) - 5, view.height - height))

        onChosen: index => {
            view.visible = false;
            view.menu.trigger(card.openIndex, index);
        }
    }
}
