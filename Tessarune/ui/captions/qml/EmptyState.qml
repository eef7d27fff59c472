import QtQuick
import Tessarune

// Explains why there are no captions, and what to do.
Column {
    id: root

    required property string presentation
    required property string title
    required property string subtitle
    required property color color
    required property bool reducesMotion
    property bool showsDots: true

    readonly property bool isShown: presentation.startsWith("empty")
    readonly property bool isChecking: presentation === "empty-checking"

    spacing: 8
    Accessible.role: Accessible.StaticText
    Accessible.name: title + "\n" + subtitle
    Accessible.ignored: !isShown
    opacity: isShown ? 1 : 0
    visible: opacity > 0

    Behavior on opacity {
        enabled: !root.reducesMotion
        NumberAnimation { duration: 180 }
    }

    Row {
        id: dots

        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 7
        height: 22
        opacity: root.showsDots ? 1 : 0

        Repeater {
            model: 3

            Rectangle {
                id: dot

                required property int index

                width: 8
                height: 8
                radius: 4
                color: root.color
                opacity: 0.28

                SequentialAnimation on opacity {
                    running: root.isChecking && !root.reducesMotion
                    loops: Animation.Infinite
                    PauseAnimation { duration: dot.index * 160 }
                    NumberAnimation { to: 1; duration: 300; easing.type: Easing.InOutQuad }
                    NumberAnimation { to: 0.28; duration: 300; easing.type: Easing.InOutQuad }
                    PauseAnimation { duration: (2 - dot.index) * 160 + 260 }
                }
            }
        }
    }

    Text {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        text: root.title
        textFormat: Text.PlainText
        color: root.color
        font.pixelSize: Theme.title
        font.weight: Font.Medium
    }

    Text {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        text: root.subtitle
        textFormat: Text.PlainText
        color: root.color
        opacity: 0.66
        font.pixelSize: Theme.heading
    }
}
