import QtQuick
import Tessarune

// A button with the name and the level of the sound source; it opens the menu of the sources.
PressButton {
    id: root

    required property string source
    required property string hint
    required property real level
    required property bool isListening
    required property real maximumWidth
    property bool showsText: true

    // The width of the button without the name, and the width of the whole name with its gap.
    readonly property real bareWidth: 24 + bars.width + content.spacing + arrow.width
    readonly property real textWidth: label.implicitWidth + content.spacing
    readonly property bool isLit: area.containsMouse || activeFocus

    width: content.implicitWidth + 24
    height: 34
    radius: height / 2
    color: isLit ? "#29ffffff" : "#14ffffff"
    name: hint + ": " + source
    Accessible.role: Accessible.ButtonMenu

    Row {
        id: content

        anchors.centerIn: parent
        spacing: Math.round(Theme.body * 0.75)

        LevelBars {
            id: bars
            anchors.verticalCenter: parent.verticalCenter
            level: root.level
            isListening: root.isListening
        }

        Text {
            id: label
            anchors.verticalCenter: parent.verticalCenter
            visible: root.showsText
            width: Math.min(implicitWidth, root.maximumWidth - root.bareWidth - content.spacing)
            elide: Text.ElideRight
            text: root.source
            textFormat: Text.PlainText
            color: "#e6e6ea"
            font.pixelSize: Math.round(Theme.body * 1.08)
        }

        Icon {
            id: arrow
            anchors.verticalCenter: parent.verticalCenter
            name: "down"
            width: Math.round(Theme.body * 0.8)
        }
    }

    MouseArea {
        id: area
        anchors.fill: parent
        hoverEnabled: true
        cursorShape: Qt.PointingHandCursor
        onClicked: root.activated()
    }
}
