import QtQuick
import Velmora.Overlay

// The status menu over the notch. A popup window of its own is not to be had on every window system,
// so it is part of the scene; its place is told to the controller, which opens the window there.
Item {
    id: view

    required property NotchWindowController controller
    required property StatusMenu menu

    property point position

    function openAt(place: point) {
        menu.openIndex = -1;
        position = place;
        visible = true;
    }

    anchors.fill: parent
    visible: false

    Binding {
        property: "menuFrame"
        target: view.controller
        value: view.visible ? Qt.rect(card.x, card.y, card.width, card.height) : Qt.rect(0, 0, 0, 0)
    }
    Binding {
        property: "submenuFrame"
        target: view.controller
        value: submenuCard.visible ? Qt.rect(submenuCard.x, submenuCard.y, submenuCard.width, submenuCard.height) : Qt.rect(0, 0, 0, 0)
    }
    Connections {
        function onIsExpandedChanged() {
            view.visible = false;
        }

        target: view.controller
    }
    Connections {
        function onDismissed() {
            view.visible = false;
        }

        target: view.menu
    }
    StatusMenuPane {
        id: card

        entries: view.menu.entries
        maximumHeight: view.height
        openIndex: view.menu.openIndex
        radius: view.controller.geometry.menuCornerRadius
        width: 210
        x: Math.max(0, Math.min(view.position.x, view.width - width - submenuCard.width - 3))
        y: Math.max(0, Math.min(view.position.y, view.height - height))

        onChosen: index => {
            if (!entries[index].hasSubmenu) {
                view.visible = false;
                view.menu.trigger(index);
            }
        }
        onEntered: (index, lineTop) => {
            view.menu.openIndex = entries[index].hasSubmenu ? index : -1;
            submenuCard.lineTop = lineTop;
        }
    }
    StatusMenuPane {
        id: submenuCard

        property real lineTop: 0 // of the line that it belongs to, in the card

        entries: view.menu.submenu
        maximumHeight: view.height
        radius: card.radius
        visible: entries.length > 0
        width: 180
        x: card.x + card.width + 3
        y: Math.max(0, Math.min(card.y + lineTop - 5, view.height - height))

        onChosen: index => {
            view.visible = false;
            view.menu.trigger(view.menu.openIndex, index);
        }
    }
}
