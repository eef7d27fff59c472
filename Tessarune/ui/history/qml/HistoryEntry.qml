import QtQuick
import Tessarune
import "qrc:/controls"

// A recording in the list: its note, or the beginning of its transcript, above its time, duration
// and state.
Rectangle {
    id: root

    required property int index
    required property string title
    required property string time
    required property string duration
    required property bool bilingual
    required property bool running
    required property bool failed
    required property string stateText
    required property real progress
    required property var texts
    property bool isCurrent: false
    // Whether the list has the keyboard focus.
    property bool hasKeys: false
    signal activated

    height: Math.round(Theme.body * 3.9)
    radius: Theme.radius
    color: isCurrent ? Theme.chosen : area.containsMouse ? Theme.hovered : "transparent"
    border.color: isCurrent && hasKeys ? Theme.accent : "transparent"
    border.width: 2
    Accessible.role: Accessible.ListItem
    Accessible.name: [title, time, duration, stateText].filter(part => part !== "").join(", ")
    Accessible.selected: isCurrent
    Accessible.onPressAction: activated()

    Column {
        anchors { left: parent.left; right: parent.right; leftMargin: Math.round(Theme.body * 0.8); rightMargin: anchors.leftMargin; verticalCenter: parent.verticalCenter }
        spacing: Math.round(Theme.body * 0.2)

        Label {
            width: parent.width
            text: root.title !== "" ? root.title : root.stateText
            wrapMode: Text.NoWrap
            elide: Text.ElideRight
            maximumLineCount: 1
            color: root.title !== "" ? Theme.text : Theme.quiet
            font.weight: root.isCurrent ? Font.Medium : Font.Normal
            Accessible.ignored: true
        }

        Row {
            id: facts

            spacing: Math.round(Theme.body * 0.6)

            Rectangle {
                anchors.verticalCenter: parent.verticalCenter
                visible: root.running
                width: Math.round(Theme.body * 0.6)
                height: width
                radius: width / 2
                color: Theme.trouble
            }
            Label {
                text: [root.time, root.duration].filter(part => part !== "").join("  ·  ")
                color: Theme.quiet
                font.pixelSize: Theme.small
                Accessible.ignored: true
            }
            Label {
                visible: root.title !== "" && root.stateText !== ""
                width: Math.min(implicitWidth, facts.parent.width - x)
                text: root.stateText
                wrapMode: Text.NoWrap
                elide: Text.ElideRight
                color: root.running || root.failed ? Theme.trouble : Theme.good
                font.pixelSize: Theme.small
                Accessible.ignored: true
            }
            Label {
                visible: root.bilingual
                width: Math.min(implicitWidth, Math.max(0, facts.parent.width - x))
                text: root.texts.bilingual
                wrapMode: Text.NoWrap
                elide: Text.ElideRight
                opacity: truncated ? 0 : 1
                color: Theme.accent
                font.pixelSize: Theme.small
                Accessible.ignored: true
            }
        }
    }

    ProgressLine {
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom; margins: Math.round(Theme.body * 0.8); bottomMargin: 2 }
        height: 3
        visible: root.progress >= 0
        value: Math.max(0, root.progress)
        Accessible.ignored: true
    }

    MouseArea {
        id: area
        anchors.fill: parent
        hoverEnabled: true
        onClicked: root.activated()
    }
}
