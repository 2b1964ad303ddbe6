import QtQuick
import Velmora.Config
import Velmora.Style
import Velmora.Widgets

// Time and date.
Item {
    id: view

    required property Clock clock

    ClockModel {
        id: model

        clock: view.clock
    }

    Column {
        anchors.verticalCenter: parent.verticalCenter
        spacing: 1
        width: parent.width

        NotchText {
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignHCenter
            size: 15
            text: model.time
            width: parent.width
        }
        NotchText {
            color: Style.detail
            horizontalAlignment: Text.AlignHCenter
            size: Style.text
            text: model.date
            width: parent.width
        }
    }
}
