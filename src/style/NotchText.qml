import QtQuick
import QtQuick.Window

// Text on the notch: white, one line, cut with an ellipsis where it has no room. Sizes are points of
// the notch, which need not be whole numbers; the toolkit counts in points of the display.
Text {
    required property real size

    color: "white"
    elide: Text.ElideRight
    font.family: "Inter"
    font.hintingPreference: Font.PreferVerticalHinting // one width under every window system
    font.pointSize: Math.max(size, 1) * 72 / (25.4 * Screen.logicalPixelDensity)
    renderType: Text.NativeRendering
    textFormat: Text.PlainText
    maximumLineCount: 1
    verticalAlignment: Text.AlignVCenter
}
