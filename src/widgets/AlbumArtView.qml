import QtQuick
import Velmora.Style
import Velmora.Widgets

// One cover, or a note in the place of one that is not known.
Successor {
    id: view

    required property NowPlayingModel playing
    required property real size

    duration: 350

    Component.onCompleted: {
        cover.visible = playing.hasArtwork;
        cover.image = playing.artwork; // and still the same while it fades out
    }

    RoundedRectangle {
        anchors.fill: parent
        color: Qt.rgba(1, 1, 1, 0.08)
        radius: 6
    }
    Symbol {
        anchors.centerIn: parent
        color: Style.placeholder
        name: "music.note"
        size: view.size * 0.38
        visible: !cover.visible
    }
    RoundedImage {
        id: cover

        anchors.fill: parent
        radius: 6
    }
}
