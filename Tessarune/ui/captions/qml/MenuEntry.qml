import QtQuick
import Tessarune

// A menu entry: a check mark, a label and a keyboard shortcut.
Rectangle {
    id: root

    required property string label
    property string keysText: ""
    property bool isOn: false
    property bool isCurrent: false
    property bool isAvailable: true
    signal activated

    function press() {
        if (isAvailable)
            activated();
    }

    readonly property real indent: Theme.body + 20

    implicitWidth: indent + name.implicitWidth + 30 + keys.implicitWidth + 10
    height: Math.round(Theme.body * 2.4)
    enabled: isAvailable
    radius: 8
    color: isAvailable && isCurrent ? "#29ffffff" : "transparent"
    Accessible.role: Accessible.MenuItem
    Accessible.name: label
    Accessible.checkable: isOn
    Accessible.checked: isOn
    Accessible.focused: isCurrent
    Accessible.onPressAction: press()

    Icon {
        x: 10
        anchors.verticalCenter: parent.verticalCenter
        visible: root.isOn
        name: "check"
        width: Theme.body
    }

    Text {
        id: name
        anchors { left: parent.left; leftMargin: root.indent; right: keys.left; rightMargin: 10; verticalCenter: parent.verticalCenter }
        elide: Text.ElideRight
        text: root.label
        textFormat: Text.PlainText
        color: root.isAvailable ? "#f2f2f4" : "#8a8a90"
        font.pixelSize: Math.round(Theme.body * 1.08)
    }

    Text {
        id: keys
        anchors { right: parent.right; rightMargin: 10; verticalCenter: parent.verticalCenter }
        text: root.keysText
        textFormat: Text.PlainText
        color: "#a8a8ae"
        font.pixelSize: Theme.body
    }

    MouseArea {
        anchors.fill: parent
        onClicked: root.press()
    }
}
