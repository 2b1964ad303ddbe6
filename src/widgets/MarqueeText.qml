import QtQuick
import Velmora.Config
import Velmora.Style
import Velmora.Widgets

// One line of text that slides to and fro if it is too long for its place.
Item {
    id: marquee

    required property Clock clock
    required property real size

    property color color: "white"
    property string text
    property int weight: Font.Normal

    readonly property real overflow: label.implicitWidth - width

    Accessible.name: text
    Accessible.role: Accessible.StaticText

    clip: overflow > 0

    NotchText {
        id: label

        Accessible.ignored: true

        color: marquee.color
        elide: Text.ElideNone
        font.weight: marquee.weight
        height: parent.height
        horizontalAlignment: Text.AlignLeft
        size: marquee.size
        text: marquee.text
        x: motion.isRightToLeft && marquee.overflow > 0 ? -marquee.overflow - motion.offset : motion.offset
    }
    MarqueeMotion {
        id: motion

        clock: marquee.clock
        frameWidth: marquee.width
        text: marquee.text
        textWidth: label.implicitWidth
    }
}
