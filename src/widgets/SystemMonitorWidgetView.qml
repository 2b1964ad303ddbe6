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
        NotchText {
            id: label

            anchors.verticalCenter: parent.verticalCenter
            color: Style.label
            font.weight: Font.DemiBold
            size: Style.smallText
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
        Item {
            id: figure

            anchors.right: parent.right
            height: parent.height
            width: Math.max(40, text.width) // a little more where the text needs it

            TabularText {
                id: text

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                color: row.color
                size: Style.smallText
                text: row.text
                weight: Font.Medium
            }
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
            color: Style.hint
            font.weight: Font.DemiBold
            size: Style.smallText
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
