import QtQuick
import QtQuick.Templates as T
import Tessarune
import "qrc:/controls"

// A choice of one of a few texts, side by side.
Rectangle {
    id: root

    required property string name // read aloud, not drawn
    required property var choices
    property int current: 0
    signal chosen(int index)

    implicitWidth: row.width + 4
    implicitHeight: Theme.controlHeight
    radius: Theme.radius
    color: Theme.hovered
    Accessible.role: Accessible.Grouping
    Accessible.name: name

    Row {
        id: row

        x: 2
        y: 2

        Repeater {
            model: root.choices

            T.AbstractButton {
                id: choice

                required property int index
                required property string modelData

                objectName: "choice"
                width: label.implicitWidth + Math.round(Theme.body * 1.8)
                height: root.height - 4
                opacity: enabled ? 1 : 0.5
                checked: root.current === index
                focusPolicy: Qt.StrongFocus
                text: modelData
                Accessible.role: Accessible.RadioButton
                Accessible.name: modelData
                Accessible.checked: checked
                Accessible.onPressAction: if (enabled) clicked()
                Accessible.onToggleAction: if (enabled) clicked()
                Keys.forwardTo: PressKeys { onPressed: choice.clicked() }
                onClicked: root.chosen(index)

                contentItem: Text {
                    id: label
                    text: choice.modelData
                    textFormat: Text.PlainText
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                    color: choice.checked ? Theme.text : Theme.quiet
                    font.pixelSize: Theme.body
                    font.weight: choice.checked ? Font.Medium : Font.Normal
                }

                background: Rectangle {
                    radius: Theme.radius - 2
                    color: choice.checked ? Theme.raised : choice.hovered ? Theme.hovered : "transparent"
                    border.color: choice.visualFocus ? Theme.accent : choice.checked ? Theme.line : "transparent"
                    border.width: choice.visualFocus ? 2 : 1
                }
            }
        }
    }
}
