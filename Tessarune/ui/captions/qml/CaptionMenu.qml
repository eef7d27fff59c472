import QtQuick
import Tessarune

// The menu of all commands.
PopupMenu {
    id: root

    required property CaptionCommandsModel commands

    title: "Tessarune"
    model: commands
    onIsOpenChanged: currentIndex = -1
    delegate: Item {
        id: entry

        required property int index
        required property string text
        required property string keysText
        required property bool available
        required property bool checked
        required property bool firstOfGroup

        function press() {
            item.press();
        }

        width: ListView.view.width
        height: line.height + item.height
        implicitWidth: item.implicitWidth

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
            onActivated: {
                root.close();
                root.commands.choose(entry.index);
            }
        }
    }
}
