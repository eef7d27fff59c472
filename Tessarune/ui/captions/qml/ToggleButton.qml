import QtQuick
import Tessarune

// Starts and stops a session, and shows how long it has lasted.
PressButton {
    id: root

    required property bool isOn
    required property bool isBusy
    required property string text
    required property string duration
    property bool showsText: true

    readonly property bool isLit: area.containsMouse || activeFocus

    width: content.width + 28
    height: 34
    radius: height / 2
    color: isOn ? (isLit ? "#4a3033" : "#3a282a") : (isLit ? "#2f7a4d" : "#27663f")
    frame: "#1fffffff"
    name: text

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
