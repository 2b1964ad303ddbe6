import QtQuick
import Velmora.Config
import Velmora.Style
import Velmora.Widgets

// Title and artist of one track.
Successor {
    id: block

    required property Clock clock
    required property NowPlayingModel playing

    property bool isNarrow: false

    isSpringy: true
    travel: height

    Component.onCompleted: {
        title.text = playing.title;
        artist.text = playing.artist;
    }

    Column {
        anchors.verticalCenter: parent.verticalCenter
        spacing: 2
        width: parent.width

        MarqueeText {
            id: title

            clock: block.clock
            height: 16
            size: block.isNarrow && artist.text === "" ? Style.largeText : 12 // room for "Nothing Playing"
            weight: Font.DemiBold
            width: parent.width
        }
        MarqueeText {
            id: artist

            clock: block.clock
            color: Style.detail
            height: 13
            size: Style.largeText
            visible: text !== ""
            width: parent.width
        }
    }
}
