import QtQuick
import Velmora.Style

// What a widget shows in the place of its content: a symbol, and a text below it.
Column {
    id: view

    required property string symbol
    required property color symbolColor
    required property real symbolSize
    required property string text
    required property color textColor

    property real textSize: Style.text

    Symbol {
        anchors.horizontalCenter: parent.horizontalCenter
        color: view.symbolColor
        name: view.symbol
        size: view.symbolSize
    }
    NotchText {
        color: view.textColor
        horizontalAlignment: Text.AlignHCenter
        size: view.textSize
        text: view.text
        width: view.width
    }
}
