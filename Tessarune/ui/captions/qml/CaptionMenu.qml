import QtQuick
import QtQuick.Window
import Tessarune

// The context menu. It covers the whole window, so that a click beside the panel closes it.
MouseArea {
    id: root

    required property CaptionCommandsModel commands

    property point wanted

    function openAt(x: real, y: real) {
        wanted = Qt.point(x, y);
        list.currentIndex = -1;
        visible = true;
        list.forceActiveFocus();
    }

    function choose(row: int) {
        visible = false;
        commands.choose(row);
    }

    Connections {
        target: root.Window.window
        function onActiveChanged() {
            if (!root.Window.window.active)
                root.visible = false;
        }
    }

    visible: false
    acceptedButtons: Qt.AllButtons
    hoverEnabled: true
    onPressed: visible = false
    onWheel: wheel => wheel.accepted = true

    Rectangle {
        id: panel

        x: Math.max(6, Math.min(root.wanted.x, root.width - width - 6))
        y: Math.max(6, Math.min(root.wanted.y, root.height - height - 6))
        width: Math.min(Math.round(Theme.body * 27), root.width - 12)
        height: Math.min(list.contentHeight + 12, root.height - 12)
        radius: 12
        color: "#2a2a2e"
        border.color: "#2effffff"
        border.width: 1

        // Keeps the menu open on a click beside an entry or on a disabled one.
        MouseArea {
            anchors.fill: parent
        }

        ListView {
            id: list

            objectName: "menu"
            Accessible.role: Accessible.PopupMenu
            Accessible.name: "Tessarune"
            anchors { fill: parent; margins: 6 }
            clip: true
            model: root.commands
            boundsBehavior: Flickable.StopAtBounds
            keyNavigationEnabled: true
            // Creates all entries, so that the height is known.
            cacheBuffer: 2000
            Keys.onReturnPressed: if (currentItem && currentItem.available) root.choose(currentIndex)
            Keys.onEscapePressed: root.visible = false

            delegate: Item {
                id: entry

                required property int index
                required property string text
                required property string keysText
                required property bool available
                required property bool checked
                required property bool firstOfGroup

                width: ListView.view.width
                height: line.height + item.height

                Item {
                    id: line
                    width: parent.width
                    height: entry.firstOfGroup ? 7 : 0

                    Rectangle {
                        visible: entry.firstOfGroup
                        anchors { left: parent.left; right: parent.right; leftMargin: 10; rightMargin: 10; verticalCenter: parent.verticalCenter }
                        height: 1
                        color: "#22ffffff"
                    }
                }

                MenuEntry {
                    id: item
                    y: line.height
                    width: parent.width
                    height: Math.round(Theme.body * 1.95)
                    label: entry.text
                    keysText: entry.keysText
                    isOn: entry.checked
                    isAvailable: entry.available
                    isCurrent: entry.ListView.isCurrentItem
                    onActivated: root.choose(entry.index)
                }
            }
        }
    }
}
