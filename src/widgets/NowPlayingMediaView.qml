pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Window
import Velmora.Config
import Velmora.Media
import Velmora.Style
import Velmora.Widgets

// Cover, title and artist, three transport buttons, and a bar that tells how far the track has come.
Item {
    id: view

    required property Clock clock
    required property MediaRemoteService service

    // Where the texts would have no room beside cover and buttons, the buttons go below them.
    readonly property bool isNarrow: textWidth < 60
    readonly property real textWidth: row.width - cover.width - buttons.width - 2 * 8

    component TransportButton: SymbolButton {
        color: Style.strong
        height: 26
        width: 28
    }

    NowPlayingModel {
        id: model

        barPixels: progress.width * Screen.devicePixelRatio
        clock: view.clock
        service: view.service
    }
    SpringMotion {
        id: layout

        dampingFraction: 0.82
        response: 0.35
        target: model.hasTrack ? 1 : 0
    }
    Item {
        id: row

        readonly property real restingY: (parent.height - height) / 2

        height: Math.max(44, texts.height + (view.isNarrow ? buttons.height : 0))
        width: parent.width - 2 * 8
        x: 8
        y: restingY - layout.value * (progress.height + 5) / 2

        Succession {
            id: cover

            anchors.verticalCenter: parent.verticalCenter
            height: 44
            key: model.coverKey
            width: 44

            delegate: AlbumArtView {
                playing: model
                size: 44
            }
        }
        Succession {
            id: texts

            anchors.left: cover.right
            anchors.leftMargin: 8
            clip: true // what comes and goes does not do so across the buttons
            height: 31
            key: model.trackKey
            width: Math.max(0, view.isNarrow ? parent.width - x : view.textWidth)
            y: view.isNarrow ? 0 : (parent.height - height) / 2

            delegate: NowPlayingText {
                clock: view.clock
                isNarrow: view.isNarrow
                playing: model
            }
        }
        Row {
            id: buttons

            x: view.isNarrow ? texts.x + (texts.width - width) / 2 : parent.width - width
            y: view.isNarrow ? texts.height : (parent.height - height) / 2

            TransportButton {
                description: qsTr("Previous track")
                size: 11
                symbol: "backward.fill"

                onActivated: view.service.previousTrack()
            }
            TransportButton {
                description: model.isPlaying ? qsTr("Pause") : qsTr("Play")
                size: 15
                symbol: model.isPlaying ? "pause.fill" : "play.fill"

                onActivated: view.service.togglePlayPause()
            }
            TransportButton {
                description: qsTr("Next track")
                size: 11
                symbol: "forward.fill"

                onActivated: view.service.nextTrack()
            }
        }
    }
    MediaProgressBar {
        id: progress

        anchors.left: row.left
        anchors.right: row.right
        barHeight: 3
        opacity: model.hasTrack ? 1 : 0
        playing: model
        visible: opacity > 0
        y: row.y + row.height + 5

        Behavior on opacity {
            NumberAnimation {
                duration: 300
                easing.type: Easing.InOutQuad
            }
        }
    }
}
