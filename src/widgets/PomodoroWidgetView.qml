pragma ComponentBehavior: Bound

import QtQuick
import Velmora.Services
import Velmora.Style
import Velmora.Widgets

// The focus timer: time, progress, the sessions done and three buttons.
Item {
    id: view

    required property PomodoroService service

    component Button: SymbolButton {
        height: 20
        width: 20
    }

    Column {
        anchors.verticalCenter: parent.verticalCenter
        spacing: 3
        width: parent.width

        Item {
            height: title.height + 5
            width: parent.width

            NotchText {
                id: title

                anchors {
                    bottom: parent.bottom
                    left: parent.left
                    leftMargin: 10
                    right: phase.left
                    rightMargin: 4
                }
                color: Qt.rgba(1, 1, 1, 0.4)
                font.weight: Font.DemiBold
                size: 9
                text: qsTr("Pomodoro")
            }
            NotchText {
                id: phase

                anchors {
                    right: parent.right
                    rightMargin: 10
                    verticalCenter: title.verticalCenter
                }
                color: view.service.phaseColor
                font.weight: Font.Bold
                size: 8
                text: view.service.phaseLabel
            }
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
            height: buttons.height + 5
            width: parent.width

            Row {
                id: dots

                readonly property real room: buttons.x - x

                anchors.verticalCenter: buttons.verticalCenter
                spacing: 4
                x: 10

                Repeater {
                    // No more than have room, however many are asked for.
                    model: Math.max(0, Math.min(view.service.sessionsBeforeLongBreak, Math.floor(dots.room / 9)))

                    Rectangle {
                        required property int index

                        color: index < view.service.sessionsCompleted ? view.service.phaseColor : Qt.rgba(1, 1, 1, 0.2)
                        height: 5
                        radius: 2.5
                        width: 5
                    }
                }
            }
            Row {
                id: buttons

                anchors.right: parent.right
                anchors.rightMargin: 10
                spacing: 10

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
