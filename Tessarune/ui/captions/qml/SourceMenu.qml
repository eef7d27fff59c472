import QtQuick
import Tessarune

// The menu of the sound sources.
Rectangle {
    id: root

    required property var names
    required property int current
    required property string title
    signal chosen(int index)
    signal dismissed

    implicitWidth: Math.round(Theme.body * 27)
    implicitHeight: list.contentHeight + 12
    width: implicitWidth
    radius: 12
    color: "#2a2a2e"
    border.color: "#2effffff"
    border.width: 1
    onVisibleChanged: if (visible) list.forceActiveFocus()
    Keys.onEscapePressed: dismissed()

    ListView {
        id: list

        Accessible.role: Accessible.PopupMenu
        Accessible.name: root.title
        anchors { fill: parent; margins: 6 }
        clip: true
        model: root.names
        currentIndex: root.current
        boundsBehavior: Flickable.StopAtBounds
        keyNavigationEnabled: true
        Keys.onReturnPressed: root.chosen(currentIndex)

        delegate: MenuEntry {
            required property int index
            required property string modelData

            width: ListView.view.width
            label: modelData
            isOn: index === root.current
            isCurrent: ListView.isCurrentItem && list.activeFocus
            onActivated: root.chosen(index)
        }
    }
}
