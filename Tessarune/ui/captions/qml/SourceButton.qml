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

    readonly property bool isLit: canPress && (area.containsMouse || activeFocus)

    width: Math.max(60, Math.min(content.implicitWidth + 24, maximumWidth))
    height: 34
    radius: height / 2
    color: isLit ? "#29ffffff" : "#14ffffff"
    name: hint + ": " + source
    Accessible.role: canPress ? Accessible.ButtonMenu : Accessible.StaticText

    Row {
        id: content

        anchors.centerIn: parent
        spacing: 9

        LevelBars {
            anchors.verticalCenter: parent.verticalCenter
            level: root.level
            isListening: root.isListening
        }

        Text {
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, Math.max(10, root.maximumWidth - 62))
            elide: Text.ElideRight
            text: root.source
            textFormat: Text.PlainText
            color: "#e6e6ea"
            font.pixelSize: Math.round(Theme.body * 1.08)
        }

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            visible: root.canPress
            name: "down"
            width: 10
            height: 10
        }
    }

    MouseArea {
        id: area
        anchors.fill: parent
        enabled: root.canPress
        hoverEnabled: true
        cursorShape: root.canPress ? Qt.PointingHandCursor : Qt.ArrowCursor
        onClicked: root.activated()
    }
}
