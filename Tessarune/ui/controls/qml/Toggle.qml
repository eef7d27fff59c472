import QtQuick
import QtQuick.Templates as T
import Tessarune

// A switch. Its text is read aloud but not drawn, because the row beside it shows the text.
T.Switch {
    id: root

    implicitWidth: Math.round(Theme.body * 2.9)
    implicitHeight: Theme.controlHeight
    opacity: enabled ? 1 : 0.4
    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.onPressAction: flip()
    Accessible.onToggleAction: flip()
    Keys.forwardTo: PressKeys { onPressed: root.flip() }

    function flip() {
        if (!enabled)
            return;
        toggle();
        toggled();
    }

    indicator: Rectangle {
        y: (root.height - height) / 2
        width: root.width
        height: Math.round(Theme.body * 1.6)
        radius: height / 2
        color: root.checked ? Theme.accent : "transparent"
        border { color: root.checked ? Theme.accent : Theme.edge; width: 1.5 }

        Rectangle {
            x: 3 + root.visualPosition * (parent.width - width - 6)
            y: 3
            width: parent.height - 6
            height: width
            radius: width / 2
            color: root.checked ? Theme.overAccent : Theme.edge

            Behavior on x {
                enabled: !Theme.reducesMotion
                NumberAnimation { duration: 90 }
            }
        }

        Rectangle {
            visible: root.visualFocus
            anchors { fill: parent; margins: -3 }
            radius: height / 2
            color: "transparent"
            border { color: Theme.accent; width: 2 }
        }
    }
}
