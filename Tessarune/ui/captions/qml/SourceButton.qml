import QtQuick
import Tessarune

// A button with the name and the level of the sound source; it opens the menu of the sources.
Rectangle {
    id: root

    required property string name
    required property string hint
    required property real level
    required property bool isListening
    required property bool hasChoice
    required property real maximumWidth
    signal activated

    readonly property bool isLit: hasChoice && (area.containsMouse || activeFocus)

    width: Math.max(60, Math.min(content.implicitWidth + 24, maximumWidth))
    height: 34
    radius: height / 2
    color: isLit ? "#29ffffff" : "#14ffffff"
    border.color: activeFocus ? "#7db8ff" : "transparent"
    border.width: 1
    activeFocusOnTab: hasChoice
    Accessible.role: hasChoice ? Accessible.ButtonMenu : Accessible.StaticText
    Accessible.name: hint + ": " + name
    Accessible.onPressAction: if (hasChoice) activated()
    Keys.onReturnPressed: if (hasChoice) activated()
    Keys.onEnterPressed: if (hasChoice) activated()
    // With the focus here, Space presses this button and is not the window's shortcut.
    Keys.onShortcutOverride: event => event.accepted = hasChoice && event.key === Qt.Key_Space
    Keys.onSpacePressed: event => { if (hasChoice && !event.isAutoRepeat) activated(); }

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
            text: root.name
            textFormat: Text.PlainText
            color: "#e6e6ea"
            font.pixelSize: Math.round(Theme.body * 1.08)
        }

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            visible: root.hasChoice
            name: "down"
            width: 10
            height: 10
        }
    }

    MouseArea {
        id: area
        anchors.fill: parent
        enabled: root.hasChoice
        hoverEnabled: true
        cursorShape: root.hasChoice ? Qt.PointingHandCursor : Qt.ArrowCursor
        onClicked: root.activated()
    }
}
