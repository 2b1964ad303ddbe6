import QtQuick
import Velmora.Overlay
import Velmora.Style

// The texts of one slide. They follow its news until another one takes their place.
Successor {
    id: block

    required property CollapsedLiveStrip strip

    property int slide: 0
    property liveSlideLook look

    function take() {
        if (slide === strip.currentIndex) {
            look = strip.look;
        }
    }

    travel: 5

    Component.onCompleted: {
        slide = strip.currentIndex;
        take();
    }

    Connections {
        function onSlideChanged() {
            block.take();
        }

        enabled: block.isCurrent
        target: block.strip
    }
    Column {
        anchors.verticalCenter: parent.verticalCenter
        visible: block.look.isStacked
        width: parent.width

        NotchText {
            color: block.look.firstColor
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignLeft
            size: block.look.firstSize
            text: block.look.first
            width: parent.width
        }
        NotchText {
            color: block.look.secondColor
            horizontalAlignment: Text.AlignLeft
            size: Style.tinyText
            text: block.look.second
            visible: text !== ""
            width: parent.width
        }
    }
    Row {
        anchors.verticalCenter: parent.verticalCenter
        spacing: 5
        visible: !block.look.isStacked

        TabularText {
            id: figure

            anchors.verticalCenter: parent.verticalCenter
            color: block.look.firstColor
            size: block.look.firstSize
            text: block.look.isFirstFigure ? block.look.first : ""
            visible: block.look.isFirstFigure
            weight: Font.DemiBold
        }
        NotchText {
            id: main

            anchors.verticalCenter: parent.verticalCenter
            color: block.look.firstColor
            font.weight: Font.DemiBold
            size: block.look.firstSize
            text: block.look.first
            visible: !block.look.isFirstFigure
            width: Math.min(implicitWidth, block.width)
        }
        NotchText {
            anchors.verticalCenter: parent.verticalCenter
            color: block.look.secondColor
            font.weight: block.look.isSecondMedium ? Font.Medium : Font.Normal
            size: Style.tinyText
            text: block.look.second
            visible: text !== ""
            width: Math.max(0, Math.min(implicitWidth, block.width - (block.look.isFirstFigure ? figure : main).width - 5))
        }
    }
}
