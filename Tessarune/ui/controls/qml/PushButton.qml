import QtQuick
import QtQuick.Templates as T
import Tessarune

// A button with a text. The primary button of a view is filled.
T.Button {
    id: root

    property bool isPrimary: false
    // A plain button has no border, and a background only while the pointer is over the button.
    property bool isPlain: false

    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: Theme.controlHeight
    leftPadding: Math.round(Theme.body)
    rightPadding: leftPadding
    opacity: enabled ? 1 : 0.5
    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: if (enabled) clicked()
    Keys.forwardTo: PressKeys { onPressed: root.clicked() }

    contentItem: Text {
        text: root.text
        textFormat: Text.PlainText
        color: root.isPrimary ? Theme.overAccent : root.isPlain ? Theme.accent : Theme.text
        font.pixelSize: Theme.body
        elide: Text.ElideRight
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }

    background: Rectangle {
        radius: Theme.radius
        color: root.isPrimary ? Theme.accent : root.isPlain ? "transparent" : Theme.raised
        border.color: root.isPrimary || root.isPlain ? "transparent" : Theme.line

        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            color: root.down ? Theme.chosen : root.hovered ? Theme.hovered : "transparent"
        }

        Rectangle {
            visible: root.visualFocus
            anchors { fill: parent; margins: -2 }
            radius: parent.radius + 2
            color: "transparent"
            border { color: Theme.accent; width: 2 }
        }
    }
}
