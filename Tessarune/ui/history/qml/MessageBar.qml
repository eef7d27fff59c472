import QtQuick
import Tessarune
import "qrc:/controls"

// A message over the window, for as long as `text` is not empty. It has a button for a further
// action, unless `action` is empty.
Rectangle {
    id: root

    required property string text
    required property real maximumWidth
    property string action: ""
    property string dismissText: ""
    signal activated
    signal dismissed

    visible: opacity > 0
    opacity: text === "" ? 0 : 1
    width: Math.min(content.implicitWidth + Math.round(Theme.body * 2), maximumWidth)
    height: Math.max(Theme.controlHeight, label.height) + Math.round(Theme.body * 0.9)
    radius: Theme.radius + 4
    color: Theme.isDark ? "#3a3a40" : "#2a2a2e"
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    Behavior on opacity {
        enabled: !Theme.reducesMotion
        NumberAnimation { duration: 120 }
    }

    Row {
        id: content

        // Keeps the text while the bar fades out.
        property string shown
        Binding on shown {
            when: root.text !== ""
            value: root.text
            restoreMode: Binding.RestoreNone
        }

        anchors.centerIn: parent
        spacing: Math.round(Theme.body * 0.6)

        // The implicit width of a wrapped text depends on its width.
        TextMetrics {
            id: longestLine

            font: label.font
            text: content.shown.split("\n").reduce((longest, line) => line.length > longest.length ? line : longest)
        }
        Text {
            id: label

            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(Math.ceil(longestLine.advanceWidth) + 1, root.maximumWidth - Theme.body * 2 - (undo.visible ? undo.width : 0) - dismiss.width - 2 * content.spacing)
            text: content.shown
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            maximumLineCount: 3
            elide: Text.ElideRight
            color: "#f2f2f4"
            font.pixelSize: Theme.body
        }
        PushButton {
            id: undo

            objectName: "undo"
            anchors.verticalCenter: parent.verticalCenter
            visible: root.action !== ""
            isPlain: true
            text: root.action
            onClicked: root.activated()

            contentItem: Text {
                text: undo.text
                color: "#8fc2ff"
                font.pixelSize: Theme.body
                font.weight: Font.Medium
                verticalAlignment: Text.AlignVCenter
                textFormat: Text.PlainText
            }
        }
        GlyphButton {
            id: dismiss

            anchors.verticalCenter: parent.verticalCenter
            glyph: "close"
            glyphColor: hovered ? "#f2f2f4" : "#c4c4ca"
            text: root.dismissText
            onClicked: root.dismissed()
        }
    }
}
