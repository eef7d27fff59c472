import QtQuick
import QtQuick.Templates as T
import QtQuick.Window
import Tessarune

// A button with a drawing; its text is the tooltip.
T.Button {
    id: root

    required property string glyph
    property string name: text
    property bool isOn: false
    // The tooltip would cover what the button has opened.
    property bool hidesHint: false
    property color glyphColor: isOn ? Theme.accent : hovered ? Theme.text : Theme.quiet

    implicitWidth: Math.round(Theme.body * 2)
    implicitHeight: implicitWidth
    Accessible.role: Accessible.Button
    Accessible.name: name
    Accessible.onPressAction: if (enabled) clicked()
    Keys.forwardTo: PressKeys { onPressed: root.clicked() }

    contentItem: Item {
        Glyph {
            anchors.centerIn: parent
            name: root.glyph
            color: root.glyphColor
        }
    }

    background: Rectangle {
        radius: Theme.radius
        color: root.hovered ? Theme.hovered : "transparent"
        border.color: root.visualFocus ? Theme.accent : "transparent"
        border.width: 2
    }

    T.ToolTip {
        id: hint

        visible: root.hovered && root.Window.active && !root.hidesHint
        delay: 600
        implicitWidth: implicitContentWidth + leftPadding + rightPadding
        implicitHeight: implicitContentHeight + topPadding + bottomPadding
        x: Math.round((root.width - width) / 2)
        y: root.height + 4
        margins: 8
        padding: Math.round(Theme.body * 0.5)
        text: root.text

        contentItem: Text {
            objectName: "hint"
            text: hint.text
            textFormat: Text.PlainText
            color: Theme.text
            font.pixelSize: Theme.small
        }

        background: Rectangle {
            radius: Theme.radius
            color: Theme.raised
            border.color: Theme.line
        }
    }
}
