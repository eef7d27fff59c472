import QtQuick
import QtQuick.Templates as T
import Tessarune

// A text field of one line.
T.TextField {
    id: root

    property string name: ""
    property string glyph: ""

    implicitWidth: Math.round(Theme.body * 17)
    implicitHeight: Theme.controlHeight
    leftPadding: Math.round(Theme.body * (glyph === "" ? 0.8 : 2.3))
    rightPadding: Math.round(Theme.body * 0.8)
    verticalAlignment: TextInput.AlignVCenter
    color: Theme.text
    selectionColor: Theme.accent
    selectedTextColor: Theme.overAccent
    selectByMouse: true
    font.pixelSize: Theme.body
    Accessible.role: Accessible.EditableText
    Accessible.name: name

    background: Rectangle {
        radius: Theme.radius
        color: Theme.panel
        border.color: root.activeFocus ? Theme.accent : Theme.line
        border.width: root.activeFocus ? 2 : 1

        Glyph {
            visible: root.glyph !== ""
            x: Math.round(Theme.body * 0.7)
            anchors.verticalCenter: parent.verticalCenter
            name: root.glyph === "" ? "search" : root.glyph
        }
    }

    Text {
        anchors { fill: parent; leftMargin: root.leftPadding; rightMargin: root.rightPadding }
        visible: root.text === "" && root.preeditText === ""
        text: root.placeholderText
        textFormat: Text.PlainText
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
        color: Theme.quiet
        font.pixelSize: Theme.body
    }
}
