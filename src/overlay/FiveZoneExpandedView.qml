pragma ComponentBehavior: Bound

import QtQuick
import Velmora.Overlay

// The panel: five zones side by side with hairlines between them, under a band of black.
Item {
    id: panel

    required property NotchWindowController controller

    component Zone: ZoneSlot {
        required property int index

        height: zones.height
        services: panel.controller.services
        width: panel.controller.zoneWidth(index, panel.width)
    }

    component Divider: ZoneDivider {
        height: zones.height
    }

    Row {
        id: zones

        anchors {
            bottom: parent.bottom
            left: parent.left
            leftMargin: 14
            right: parent.right
            rightMargin: 14
            top: parent.top
            topMargin: Math.max(0, panel.controller.expandedTopPadding)
        }

        Zone {
            index: 0
            type: panel.controller.farLeftWidget
        }
        Divider {}
        Zone {
            index: 1
            type: panel.controller.leftWidget
        }
        Divider {}
        Zone {
            index: 2
            type: panel.controller.centerWidget
        }
        Divider {}
        Zone {
            index: 3
            type: panel.controller.rightWidget
        }
        Divider {}
        Zone {
            index: 4
            type: panel.controller.farRightWidget
        }
    }
}
