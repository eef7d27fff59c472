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

    // The width of the button without its text, and the width of the text with its gap.
    readonly property real bareWidth: 28 + dot.width + (isOn ? content.spacing + time.implicitWidth : 0)
    readonly property real textWidth: label.implicitWidth + content.spacing
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
        spacing: Math.round(Theme.body * 0.75)

        Rectangle {
            id: dot
            anchors.verticalCenter: parent.verticalCenter
            width: 2 * Math.round(Theme.body / 2)
            height: width
            radius: width * (root.isOn ? 0.23 : 0.5)
            color: root.isOn ? "#ff6f61" : "#f2f2f4"
            opacity: root.isBusy ? 0.5 : 1
        }

        Text {
            id: label
            anchors.verticalCenter: parent.verticalCenter
            visible: root.showsText
            text: root.text
            textFormat: Text.PlainText
            color: "#f2f2f4"
            font.pixelSize: Math.round(Theme.body * 1.08)
            font.weight: Font.Medium
        }

        Text {
            id: time
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
