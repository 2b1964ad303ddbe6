pragma ComponentBehavior: Bound

import QtQuick
import Velmora.Overlay

// The panel: five zones side by side with hairlines between them, under a band of black.
Item {
    id: panel

    required property NotchWindowController controller

    readonly property notchGeometry geometry: controller.geometry

    Row {
        anchors {
            bottom: parent.bottom
            top: parent.top
            topMargin: panel.geometry.topPadding
        }
        x: panel.geometry.panelPadding

        Repeater {
            model: panel.controller.widgets

            Row {
                id: zone

                required property int index
                required property string modelData

                height: parent.height

                ZoneDivider {
                    height: parent.height
                    visible: zone.index > 0
                    width: panel.geometry.dividerWidth
                }
                ZoneSlot {
                    height: parent.height
                    services: panel.controller.services
                    type: zone.modelData
                    width: panel.geometry.zoneWidths[zone.index]
                }
            }
        }
    }
}
