import QtQuick
import QtQuick.Templates as T
import Tessarune

// Where in a long list one is. It is quiet until the pointer comes near.
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
