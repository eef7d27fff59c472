import QtQuick
import QtQuick.Templates as T
import Tessarune

// A scrolling column. It keeps the item with the keyboard focus in view.
Flickable {
    id: root

    default property alias content: column.data
    property real margin: Math.round(Theme.body * 1.7)

    readonly property Item focused: Window.activeFocusItem
    onFocusedChanged: {
        for (let item = focused; item; item = item.parent) {
            if (item === column) {
                const top = focused.mapToItem(column, 0, 0).y;
                contentY = Math.max(0, Math.min(top - margin, Math.max(contentY, top + focused.height + 2 * margin - height)));
                return;
            }
        }
    }

    clip: true
    contentWidth: width
    contentHeight: column.height + 2 * margin
    boundsBehavior: Flickable.StopAtBounds

    Column {
        id: column

        x: root.margin
        y: root.margin
        width: root.width - 2 * root.margin
        spacing: 0
    }

    T.ScrollBar.vertical: ListBar {}
}
