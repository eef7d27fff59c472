import QtQuick
import QtQuick.Templates as T
import Tessarune

// A radio button. Its text is read aloud but not drawn, because the row beside it shows the text.
T.AbstractButton {
    id: root

    implicitWidth: Math.round(Theme.body * 1.6)
    implicitHeight: implicitWidth
    opacity: enabled ? 1 : 0.35
    Accessible.role: Accessible.RadioButton
    Accessible.name: text
    Accessible.checked: checked
    Accessible.onPressAction: if (enabled) clicked()
    Accessible.onToggleAction: if (enabled) clicked()
    Keys.forwardTo: PressKeys { onPressed: root.clicked() }

    background: Rectangle {
        anchors.centerIn: parent
        width: Math.round(Theme.body * 1.3)
        height: width
        radius: width / 2
        color: root.hovered ? Theme.hovered : "transparent"
        border.color: root.checked || root.visualFocus ? Theme.accent : Theme.edge
        border.width: root.visualFocus ? 3 : 1.5

        Rectangle {
            visible: root.checked
            anchors.centerIn: parent
            width: Math.round(parent.width * 0.5)
            height: width
            radius: width / 2
            color: Theme.accent
        }
    }
}
