import QtQuick
import Velmora.Style
import Velmora.Widgets

// The cover of one track, or a note in its place. It follows the news until another track has come.
Successor {
    id: view

    required property NowPlayingModel playing
    required property real size

    property bool hasImage: false

    function take() {
        hasImage = playing.hasArtwork;
        if (hasImage) {
            cover.image = playing.artwork; // and still there while it fades out
        }
    }

    duration: 350

    Component.onCompleted: take()

    component Fade: NumberAnimation {
        easing.type: Easing.InOutQuad
    }

    Connections {
        function onArtworkChanged() {
            view.take();
        }

        enabled: view.isCurrent
        target: view.playing
    }
    Rectangle {
        anchors.fill: parent
        antialiasing: true
        color: Qt.rgba(1, 1, 1, 0.08)
        radius: 6
    }
    Symbol {
        anchors.centerIn: parent
        color: Qt.rgba(1, 1, 1, 0.3)
        name: "music.note"
        opacity: view.hasImage ? 0 : 1
        size: view.size * 0.38

        Behavior on opacity {
            Fade {
                duration: 250
            }
        }
    }
    RoundedImage {
        id: cover

        anchors.fill: parent
        opacity: view.hasImage ? 1 : 0
        radius: 6

        Behavior on opacity {
            Fade {
                duration: 350
            }
        }
    }
}
