import QtQuick
import Tessarune

// Starts and stops a session, and shows how long it has lasted.
Rectangle {
    id: root

    required property bool isOn
    required property bool isBusy
    required property string text
    required property string duration
    property bool showsText: true
    signal activated

    readonly property bool isLit: area.containsMouse || activeFocus

    width: content.width + 28
    height: 34
    radius: height / 2
    color: isOn ? (isLit ? "#4a3033" : "#3a282a") : (isLit ? "#2f7a4d" : "#27663f")
    border.color: activeFocus ? "#7db8ff" : "#1fffffff"
    border.width: 1
    activeFocusOnTab: true
    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: activated()
    Keys.onReturnPressed: activated()
    Keys.onEnterPressed: activated()
    // With the focus here, Space presses this button and is not the window's shortcut.
    Keys.onShortcutOverride: event => event.accepted = event.key === Qt.Key_Space
    Keys.onSpacePressed: event => { if (!event.isAutoRepeat) activated(); }

    Row {
        id: content

        anchors.centerIn: parent
        spacing: 9

        Rectangle {
            anchors.verticalCenter: parent.verticalCenter
            width: 11
            height: 11
            radius: root.isOn ? 2.5 : 5.5
            color: root.isOn ? "#ff6f61" : "#f2f2f4"
            opacity: root.isBusy ? 0.5 : 1
        }

        Text {
            anchors.verticalCenter: parent.verticalCenter
            visible: root.showsText
            text: root.text
            textFormat: Text.PlainText
            color: "#f2f2f4"
            font.pixelSize: Math.round(Theme.body * 1.08)
            font.weight: Font.Medium
        }

        Text {
            anchors.verticalCenter: parent.verticalCenter
            visible: root.isOn
            text: root.duration
            textFormat: Text.PlainText
            color: "#b8b8bd"
            font.pixelSize: Math.round(Theme.body * 1.08)
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
