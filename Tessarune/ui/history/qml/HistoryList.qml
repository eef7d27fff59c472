import QtQuick
import QtQuick.Templates as T
import Tessarune
import "qrc:/controls"

// The list of the recordings, grouped by day.
FocusScope {
    id: root

    required property HistoryWindowModel model

    ListView {
        id: list

        objectName: "recordings"
        readonly property real barWidth: Math.round(Theme.body * 0.7)

        anchors { fill: parent; leftMargin: Math.round(Theme.body * 0.7); rightMargin: 1 }
        clip: true
        focus: true
        activeFocusOnTab: true
        boundsBehavior: Flickable.StopAtBounds
        spacing: 2
        bottomMargin: Math.round(Theme.body * 0.7)
        model: root.model.list
        reuseItems: true
        highlightMoveDuration: 0
        currentIndex: root.model.currentRow
        Accessible.role: Accessible.List
        Accessible.name: root.model.texts.title
        Keys.onUpPressed: root.model.currentRow = Math.max(0, currentIndex - 1)
        Keys.onDownPressed: root.model.currentRow = Math.min(count - 1, currentIndex + 1)
        Keys.onDeletePressed: event => {
            if (!event.isAutoRepeat)
                root.model.deleteCurrent();
        }
        Keys.onPressed: event => {
            const page = Math.max(1, Math.floor(height / (Theme.body * 4)) - 1);
            const targets = {
                [Qt.Key_Home]: 0,
                [Qt.Key_End]: count - 1,
                [Qt.Key_PageUp]: Math.max(0, currentIndex - page),
                [Qt.Key_PageDown]: Math.min(count - 1, currentIndex + page)
            };
            if (!(event.key in targets) || count === 0)
                return;
            root.model.currentRow = targets[event.key];
            event.accepted = true;
        }

        section.property: "day"
        section.delegate: Label {
            required property string section

            width: ListView.view.width
            topPadding: Math.round(Theme.body * 0.9)
            bottomPadding: Math.round(Theme.body * 0.35)
            leftPadding: Math.round(Theme.body * 0.8)
            text: section
            wrapMode: Text.NoWrap
            elide: Text.ElideRight
            color: Theme.quiet
            font.pixelSize: Theme.small
            font.weight: Font.Medium
        }

        delegate: HistoryEntry {
            width: list.width - list.barWidth
            texts: root.model.texts
            isCurrent: ListView.isCurrentItem
            hasKeys: ListView.view.activeFocus
            onActivated: {
                list.forceActiveFocus();
                root.model.currentRow = index;
            }
        }

        T.ScrollBar.vertical: ListBar {}
    }
}
