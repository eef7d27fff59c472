import QtQuick
import Tessarune
import "qrc:/controls"

// Shown in place of an empty view: why it is empty, and what to do.
Item {
    id: root

    property string glyph: "captions"
    property string title: ""
    property string text: ""
    property string action: ""
    signal activated

    visible: title !== ""

    Column {
        anchors.centerIn: parent
        width: Math.min(parent.width - 2 * Theme.body, Theme.body * 26)
        spacing: Math.round(Theme.body * 0.7)

        Glyph {
            anchors.horizontalCenter: parent.horizontalCenter
            name: root.glyph
            width: Math.round(Theme.body * 2.4)
            color: Theme.edge
        }
        Label {
            width: parent.width
            text: root.title
            horizontalAlignment: Text.AlignHCenter
            font.weight: Font.Medium
        }
        Label {
            width: parent.width
            visible: text !== ""
            text: root.text
            horizontalAlignment: Text.AlignHCenter
            color: Theme.quiet
            font.pixelSize: Theme.small
        }
        PushButton {
            objectName: "placeholderAction"
            anchors.horizontalCenter: parent.horizontalCenter
            visible: text !== ""
            text: root.action
            onClicked: root.activated()
        }
    }
}
