import QtQuick
import QtQuick.Templates as T
import Tessarune
import "qrc:/controls"

// A button with a figure and its title.
T.AbstractButton {
    id: root

    required property string figure

    implicitHeight: Math.round(Theme.body * 5.2)
    focusPolicy: Qt.StrongFocus
    Accessible.role: Accessible.RadioButton
    Accessible.name: text + ": " + figure
    Accessible.checked: checked
    Accessible.onPressAction: if (enabled) clicked()
    Accessible.onToggleAction: if (enabled) clicked()
    Keys.forwardTo: PressKeys { onPressed: root.clicked() }

    contentItem: Column {
        leftPadding: Math.round(Theme.body)
        topPadding: Math.round(Theme.body * 0.8)
        spacing: Math.round(Theme.body * 0.2)

        Text {
            text: root.text
            textFormat: Text.PlainText
            color: root.checked ? Theme.accent : Theme.quiet
            font.pixelSize: Theme.small
        }
        Text {
            text: root.figure
            textFormat: Text.PlainText
            color: Theme.text
            font.pixelSize: Theme.title
            font.weight: Font.Medium
        }
    }

    background: Rectangle {
        radius: Theme.radius + 2
        color: root.checked ? Theme.chosen : root.hovered ? Theme.hovered : Theme.panel
        border.color: root.visualFocus ? Theme.accent : Theme.line
        border.width: root.visualFocus ? 2 : 1
    }
}
