pragma ComponentBehavior: Bound

import QtQuick
import Velmora.Overlay
import Velmora.Widgets

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

                Rectangle {
                    color: Qt.rgba(1, 1, 1, 0.07)
                    height: parent.height - 2 * 10
                    visible: zone.index > 0
                    width: panel.geometry.dividerWidth
                    y: 10
                }
                Loader {
                    height: parent.height
                    width: panel.geometry.zoneWidths[zone.index]

                    Component.onCompleted: setSource(WidgetViews.source(zone.modelData), WidgetViews.inputs(zone.modelData, panel.controller.services))
                }
            }
        }
    }
}
