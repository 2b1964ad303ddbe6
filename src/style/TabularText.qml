pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Window

// A short text whose digits all take up the same width, so that the rest stands still while they
// change. The toolkit cannot ask the font for such digits, hence a cell for each.
Row {
    id: line

    required property real size
    required property string text

    property color color: "white"
    property int weight: Font.Normal

    Accessible.name: text
    Accessible.role: Accessible.StaticText

    NotchText {
        id: sample

        font.weight: line.weight
        size: line.size
        visible: false
    }
    FontMetrics {
        id: metrics

        readonly property real digitWidth: widestDigit(font)

        function widestDigit(ignored: font): real {
            const widest = Math.max(...Array.from("0123456789", digit => advanceWidth(digit)));
            return Math.round(widest * Screen.devicePixelRatio) / Screen.devicePixelRatio;
        }

        font: sample.font
    }
    Repeater {
        model: line.text.length

        NotchText {
            required property int index

            readonly property string character: line.text.charAt(index)

            Accessible.ignored: true

            color: line.color
            elide: Text.ElideNone
            font.weight: line.weight
            horizontalAlignment: Text.AlignHCenter
            size: line.size
            text: character
            width: character >= "0" && character <= "9" ? metrics.digitWidth : implicitWidth
        }
    }
}
