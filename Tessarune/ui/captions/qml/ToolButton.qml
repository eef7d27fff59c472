import QtQuick
import Tessarune

// A button with an icon; its text is the tooltip.
PressButton {
    id: root

    required property string icon
    required property string text
    property bool isOn: false

    width: height
    height: 34
    radius: Math.round(height * 0.3)
    color: area.containsMouse || activeFocus ? "#29ffffff" : "transparent"
    name: text

    Icon {
        anchors.centerIn: parent
        name: root.icon
        color: root.isOn ? "#7db8ff" : "#e6e6ea"
    }

    Rectangle {
        objectName: "hint"
        visible: rest.hasRested && area.containsMouse
        anchors { top: parent.bottom; topMargin: 4; right: parent.right }
        width: hint.width + 18
        height: hint.height + 12
        radius: 8
        color: "#fa2a2a2e"
        border.color: "#2effffff"
        border.width: 1

        Text {
            id: hint
            anchors.centerIn: parent
            text: root.text
            textFormat: Text.PlainText
            color: "#f2f2f4"
            font.pixelSize: Theme.body
        }
    }

    MouseArea {
        id: area
        anchors.fill: parent
        hoverEnabled: true
        cursorShape: Qt.PointingHandCursor
        onContainsMouseChanged: rest.hasRested = false
        onClicked: root.activated()
    }

    Timer {
        id: rest
        property bool hasRested: false
        interval: 600
        running: area.containsMouse && !hasRested
        onTriggered: hasRested = true
    }
}
