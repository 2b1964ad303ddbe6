import QtQuick
import Velmora.Style
import Velmora.Widgets

// How far the track has come. It only shows; nothing seeks.
Column {
    id: view

    required property NowPlayingModel playing
    required property real barHeight

    Accessible.name: playing.hasDuration ? qsTr("%1 of %2").arg(playing.positionText).arg(playing.durationText) : qsTr("Unknown length")
    Accessible.role: Accessible.ProgressBar

    spacing: 2

    component TimeText: TabularText {
        Accessible.ignored: true

        color: Style.hint
        size: Style.smallText
    }

    Item {
        height: view.barHeight + 2
        width: parent.width

        MiniBar {
            anchors.verticalCenter: parent.verticalCenter
            color: Style.track
            fill: Style.fill
            height: view.barHeight
            value: view.playing.progress
            width: parent.width
        }
    }
    Item {
        height: duration.implicitHeight
        visible: view.playing.hasDuration
        width: parent.width

        TimeText {
            text: view.playing.positionText
        }
        TimeText {
            id: duration

            anchors.right: parent.right
            text: view.playing.durationText
        }
    }
}
