import QtQuick
import Tessarune

// A menu in a window of its own.
Item {
    id: root

    required property string title
    property alias model: list.model
    property alias delegate: list.delegate
    property alias currentIndex: list.currentIndex
    readonly property alias isOpen: menu.visible

    function openAt(item: Item, x: real, y: real) {
        menu.openAt(item, x, y);
    }
    function close() {
        menu.hide();
    }

    MenuWindow {
        id: menu

        list: list
        margin: 6
        leastWidth: Math.round(Theme.body * 14)
        mostWidth: Math.round(Theme.body * 44)

        Rectangle {
            anchors.fill: parent
            radius: 12
            color: "#2a2a2e"
            border.color: "#4c4c50"
            border.width: 1

            ListView {
                id: list

                objectName: "menu"
                Accessible.role: Accessible.PopupMenu
                Accessible.name: root.title
                anchors { fill: parent; margins: menu.margin }
                clip: true
                boundsBehavior: Flickable.StopAtBounds
                keyNavigationWraps: true
                highlightMoveDuration: 0
                // Creates all entries, so that the size is known.
                cacheBuffer: 10000
            }

            // The pointer and the keys change the same current entry. Qt reports a resting pointer
            // after each scroll; such a report must not change the current entry. The handler is
            // outside the list, because in the list each scroll would change the position of a
            // resting pointer.
            HoverHandler {
                property point last: Qt.point(-1, -1)

                onPointChanged: {
                    const at = list.mapFromItem(parent, point.position);
                    if (at.x === last.x && at.y === last.y)
                        return;
                    last = at;
                    const entry = list.contains(at) ? list.indexAt(at.x, at.y + list.contentY) : -1;
                    if (entry >= 0)
                        list.currentIndex = entry;
                }
            }

            // Shows that the list continues if the menu does not fit on the screen.
            Rectangle {
                visible: list.visibleArea.heightRatio < 1
                x: parent.width - 5
                y: menu.margin + list.visibleArea.yPosition * list.height
                width: 3
                height: list.visibleArea.heightRatio * list.height
                radius: 1.5
                color: "#8a8a90"
            }
        }
    }
}
