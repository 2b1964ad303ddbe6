import QtQuick
import Velmora.Style

// The name of a widget at the left, and a note at the right.
Item {
    id: header

    required property string note
    required property string title

    property color noteColor: Style.label
    property int noteWeight: Font.Normal

    height: 16

    NotchText {
        anchors {
            bottom: parent.bottom
            left: parent.left
            leftMargin: 10
            right: note.left
            rightMargin: 4
        }
        color: Style.label
        font.weight: Font.DemiBold
        height: 11
        size: Style.text
        text: header.title
    }
    NotchText {
        id: note

        anchors {
            bottom: parent.bottom
            right: parent.right
            rightMargin: 10
        }
        color: header.noteColor
        font.weight: header.noteWeight
        height: 11
        size: Style.smallText
        text: header.note
    }
}
