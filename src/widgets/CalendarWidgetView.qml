import QtQuick
import Velmora.Config
import Velmora.Services
import Velmora.Style
import Velmora.Widgets

// The event that is under way, or the next one.
Item {
    id: view

    required property Clock clock
    required property CalendarService service

    CalendarModel {
        id: model

        clock: view.clock
        service: view.service
    }
    WidgetStatus {
        anchors.left: parent.left
        anchors.leftMargin: 6
        anchors.right: parent.right
        anchors.rightMargin: 6
        anchors.verticalCenter: parent.verticalCenter
        spacing: 3
        symbol: "calendar.badge.exclamationmark"
        symbolColor: Style.detail
        symbolSize: 16
        text: qsTr("Grant Calendar Access")
        textColor: Qt.rgba(1, 1, 1, 0.45)
        visible: model.content === CalendarModel.Unauthorized
    }
    WidgetStatus {
        anchors.verticalCenter: parent.verticalCenter
        spacing: 2
        symbol: "calendar"
        symbolColor: Style.placeholder
        symbolSize: 15
        text: qsTr("No events today")
        textColor: Style.hint
        visible: model.content === CalendarModel.Nothing
        width: parent.width
    }
    Column {
        anchors.left: parent.left
        anchors.leftMargin: 8
        anchors.right: parent.right
        anchors.rightMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        spacing: 3
        visible: model.content === CalendarModel.Event

        Item {
            height: Math.max(dot.height, status.implicitHeight)
            width: parent.width

            // The halo of an event under way.
            RoundedRectangle {
                anchors.centerIn: dot
                color: Qt.alpha(model.color, 0.4)
                height: width
                visible: model.isLive
                width: dot.width * 1.6 + 3
            }
            RoundedRectangle {
                id: dot

                anchors.verticalCenter: parent.verticalCenter
                color: model.color
                height: 7
                width: 7
            }
            NotchText {
                id: status

                anchors.left: dot.right
                anchors.leftMargin: 5
                anchors.right: more.left
                anchors.verticalCenter: parent.verticalCenter
                color: model.isLive ? model.color : Qt.rgba(1, 1, 1, 0.55)
                font.weight: model.isLive ? Font.Bold : Font.Medium
                size: Style.smallText
                text: model.status
            }
            NotchText {
                id: more

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                color: Style.label
                size: Style.smallText
                text: model.more
            }
        }
        NotchText {
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignLeft
            size: 11
            text: model.title
            width: parent.width
        }
        NotchText {
            color: Style.detail
            horizontalAlignment: Text.AlignLeft
            size: Style.text
            text: model.detail
            width: parent.width
        }
    }
}
