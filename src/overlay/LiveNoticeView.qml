import QtQuick
import Velmora.Overlay
import Velmora.Style

// A short text in a capsule. It stands on black, so that what lies below does not shine through.
Item {
    id: notice

    required property CollapsedLiveStrip strip

    // It is still to be read while it fades out.
    property string text

    Component.onCompleted: text = strip.noticeText

    Accessible.name: text
    Accessible.role: Accessible.AlertMessage

    Connections {
        function onNoticeTextChanged() {
            if (notice.strip.hasNotice) {
                notice.text = notice.strip.noticeText;
            }
        }

        target: notice.strip
    }
    RoundedRectangle {
        id: capsule

        anchors.centerIn: parent
        color: Qt.rgba(0.12, 0.12, 0.12, 1)
        height: label.implicitHeight + 6
        width: Math.min(label.implicitWidth + 18, notice.width - 20)

        NotchText {
            id: label

            anchors.fill: parent
            anchors.leftMargin: 9
            anchors.rightMargin: 9
            font.weight: Font.Medium
            horizontalAlignment: Text.AlignHCenter
            size: 8.5
            text: notice.text
        }
    }
}
