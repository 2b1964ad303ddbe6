pragma ComponentBehavior: Bound

import QtQuick
import Velmora.Services
import Velmora.Style
import Velmora.Widgets

// The focus timer: time, progress, the sessions done and three buttons.
Item {
    id: view

    required property PomodoroService service

    // A frame of 20 for the symbol, and half of the space between two of them at each side.
    component Button: SymbolButton {
        height: 24
        width: 30
    }

    Column {
        anchors.verticalCenter: parent.verticalCenter
        spacing: 3
        width: parent.width

        WidgetHeader {
            note: view.service.phaseLabel
            noteColor: view.service.phaseColor
            noteWeight: Font.Bold
            title: qsTr("Pomodoro")
            width: parent.width
        }
        TabularText {
            anchors.horizontalCenter: parent.horizontalCenter
            size: 20
            text: view.service.timeString
            weight: Font.DemiBold
        }
        MiniBar {
            fill: view.service.phaseColor
            height: 3
            value: view.service.progress
            width: parent.width - 20
            x: 10
        }
        Item {
            height: 20 + 5
            width: parent.width

            Row {
                id: dots

                readonly property real room: buttons.x + 5 - x

                anchors.verticalCenter: buttons.verticalCenter
                spacing: 4
                x: 10

                Repeater {
                    // No more than have room, however many are asked for.
                    model: Math.max(0, Math.min(view.service.sessionsBeforeLongBreak, Math.floor(dots.room / 9)))

                    RoundedRectangle {
                        required property int index

                        color: index < view.service.sessionsCompleted ? view.service.phaseColor : Style.dim
                        height: 5
                        width: 5
                    }
                }
            }
            Row {
                id: buttons

                anchors.right: parent.right
                anchors.rightMargin: 10 - 5
                y: -2

                Button {
                    description: qsTr("Reset")
                    size: 10
                    symbol: "arrow.counterclockwise"

                    onActivated: view.service.reset()
                }
                Button {
                    description: view.service.isRunning ? qsTr("Pause") : qsTr("Start")
                    size: 13
                    symbol: view.service.isRunning ? "pause.fill" : "play.fill"

                    onActivated: {
                        if (view.service.isRunning) {
                            view.service.pause();
                        } else {
                            view.service.start();
                        }
                    }
                }
                Button {
                    description: qsTr("Skip")
                    size: 10
                    symbol: "forward.end.fill"

                    onActivated: view.service.skip()
                }
            }
        }
    }
}
