pragma ComponentBehavior: Bound

import QtQuick
import Velmora.Services
import Velmora.Style
import Velmora.Widgets

// Three gauges: processor, memory, disk.
Item {
    id: view

    required property SystemMonitorService monitor

    component Gauge: Item {
        id: gauge

        required property int kind

        height: 12
        width: parent ? parent.width : 0

        SystemMonitorRow {
            id: row

            kind: gauge.kind
            monitor: view.monitor
        }
        FigureText {
            id: label

            anchors.verticalCenter: parent.verticalCenter
            color: Qt.rgba(1, 1, 1, 0.4)
            font.weight: Font.DemiBold
            size: 8
            text: row.label
            width: 28
        }
        MiniBar {
            anchors {
                left: label.right
                leftMargin: 6
                right: figure.left
                rightMargin: 6
                verticalCenter: parent.verticalCenter
            }
            fill: row.color
            height: 4
            value: row.fraction
        }
        FigureText {
            id: figure

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            color: row.color
            font.weight: Font.Medium
            horizontalAlignment: Text.AlignRight
            size: 8
            text: row.text
            width: Math.max(40, implicitWidth) // a little more where the text needs it
        }
    }

    Column {
        anchors {
            left: parent.left
            leftMargin: 10
            right: parent.right
            rightMargin: 10
            verticalCenter: parent.verticalCenter
        }
        spacing: 5

        NotchText {
            bottomPadding: 1
            color: Qt.rgba(1, 1, 1, 0.35)
            font.weight: Font.DemiBold
            size: 8
            text: qsTr("SYSTEM")
            width: parent.width
        }
        Gauge {
            kind: SystemMonitorRow.Processor
        }
        Gauge {
            kind: SystemMonitorRow.Memory
        }
        Gauge {
            kind: SystemMonitorRow.Disk
        }
    }
}
