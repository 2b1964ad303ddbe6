pragma ComponentBehavior: Bound

import QtQuick
import Velmora.Overlay
import Velmora.Style

// The slide on show: symbol, texts, and at the end a dot for each slide and the speaker button.
Item {
    id: row

    required property CollapsedLiveStrip strip

    Accessible.name: strip.look.second === "" ? strip.look.first : qsTr("%1, %2").arg(strip.look.first).arg(strip.look.second)
    Accessible.role: Accessible.StaticText

    Item {
        id: icon

        height: parent.height
        width: 18

        Symbol {
            anchors.centerIn: parent
            color: row.strip.look.symbolColor
            name: row.strip.look.symbol
            size: 9
        }
    }
    Succession {
        anchors {
            bottom: parent.bottom
            left: icon.right
            right: controls.left
            rightMargin: 4
            top: parent.top
        }
        key: row.strip.currentIndex

        delegate: LiveSlideText {
            strip: row.strip
        }
    }
    Row {
        id: controls

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        spacing: 4

        Row {
            anchors.verticalCenter: parent.verticalCenter
            spacing: 3
            visible: row.strip.slideCount >= 2

            Repeater {
                model: row.strip.slideCount

                RoundedRectangle {
                    required property int index

                    color: index === row.strip.currentIndex ? Style.control : Style.dim
                    height: 3
                    width: 3

                    Behavior on color {
                        ColorAnimation {
                            duration: 250
                            easing.type: Easing.InOutQuad
                        }
                    }
                }
            }
        }
        Item {
            id: speaker

            Accessible.name: qsTr("Volume")
            Accessible.role: Accessible.Button
            Accessible.onPressAction: row.strip.showVolume = !row.strip.showVolume

            height: 16
            width: 16

            Symbol {
                anchors.centerIn: parent
                color: row.strip.showVolume ? Style.fill : Style.hint
                name: row.strip.showVolume ? "speaker.wave.2.fill" : "speaker.fill"
                size: 8
            }
            TapHandler {
                onTapped: row.strip.showVolume = !row.strip.showVolume
            }
        }
    }
}
