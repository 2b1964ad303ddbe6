pragma ComponentBehavior: Bound

import QtQuick
import Velmora.Overlay
import Velmora.Style

// The slide on show: symbol, texts, and at the end a dot for each slide.
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
            right: dots.visible ? dots.left : parent.right
            rightMargin: 4
            top: parent.top
        }
        key: row.strip.currentIndex

        delegate: LiveSlideText {
            strip: row.strip
        }
    }
    Row {
        id: dots

        anchors.right: parent.right
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
}
