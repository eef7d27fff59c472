import QtQuick
import QtQuick.Templates as T
import Tessarune

// A scroll bar that is faint until the pointer is over it.
T.ScrollBar {
    id: root

    implicitWidth: 10
    padding: 2
    policy: T.ScrollBar.AsNeeded

    contentItem: Rectangle {
        implicitWidth: 6
        implicitHeight: 6
        radius: 3
        color: Theme.edge
        opacity: root.size < 1 ? (root.hovered || root.pressed ? 0.9 : 0.45) : 0
    }
}
