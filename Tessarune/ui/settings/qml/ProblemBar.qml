import QtQuick
import Tessarune
import "qrc:/controls"

// A bar with an error message and a button for a remedy.
Rectangle {
    id: root

    property string text: ""
    property string action: ""
    signal activated

    visible: text !== ""
    height: visible ? Math.max(label.height, button.height) + 2 * Theme.gap : 0
    color: Theme.isDark ? "#3a2523" : "#fbe9e7"

    Label {
        id: label
        anchors { left: parent.left; leftMargin: Math.round(Theme.body * 1.7); right: button.left; rightMargin: Theme.gap; verticalCenter: parent.verticalCenter }
        text: root.text
        color: Theme.trouble
        Accessible.role: Accessible.AlertMessage
    }

    PushButton {
        id: button
        anchors { right: parent.right; rightMargin: Math.round(Theme.body * 1.7); verticalCenter: parent.verticalCenter }
        visible: root.action !== ""
        text: root.action
        onClicked: root.activated()
    }
}
