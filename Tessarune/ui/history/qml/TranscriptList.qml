import QtQuick
import QtQuick.Templates as T
import Tessarune
import "qrc:/controls"

// The rows of a transcript. Up and down scroll it, page by page with the keys for that.
FocusScope {
    id: root

    required property HistoryDetailModel detail
    required property real margin

    ListView {
        id: list

        objectName: "transcript"
        anchors.fill: parent
        clip: true
        focus: true
        activeFocusOnTab: root.detail.hasText
        boundsBehavior: Flickable.StopAtBounds
        bottomMargin: Math.round(Theme.body * 4)
        spacing: Math.round(Theme.body * 0.9)
        model: root.detail.rows
        reuseItems: true
        Accessible.role: Accessible.List

        function scroll(by: real) {
            contentY = Math.max(originY, Math.min(contentY + by, originY + Math.max(0, contentHeight + bottomMargin - height)));
        }

        Keys.onUpPressed: scroll(-Theme.body * 4)
        Keys.onDownPressed: scroll(Theme.body * 4)
        Keys.onPressed: event => {
            if (event.key === Qt.Key_PageDown || event.key === Qt.Key_Space)
                scroll(height * 0.9);
            else if (event.key === Qt.Key_PageUp)
                scroll(-height * 0.9);
            else if (event.key === Qt.Key_Home)
                positionViewAtBeginning();
            else if (event.key === Qt.Key_End)
                positionViewAtEnd();
            else
                return;
            event.accepted = true;
        }

        delegate: Item {
            id: row

            required property string time
            required property string source
            required property string translation

            readonly property real timeWidth: root.detail.isTimed ? Math.round(Theme.body * 4.2) : 0

            width: ListView.view.width
            height: texts.height

            Label {
                x: root.margin
                y: Math.round(Theme.body * 0.14)
                visible: text !== ""
                text: row.time
                color: Theme.quiet
                font.pixelSize: Theme.small
            }

            Column {
                id: texts

                x: root.margin + row.timeWidth
                width: Math.min(parent.width - x - root.margin, Theme.body * 52)
                spacing: Math.round(Theme.body * 0.25)

                SelectableLabel {
                    width: parent.width
                    visible: row.source !== ""
                    text: row.source
                    font.pixelSize: Math.round(Theme.body * 1.08)
                }
                SelectableLabel {
                    width: parent.width
                    visible: row.translation !== ""
                    text: row.translation
                    color: Theme.quiet
                }
            }
        }

        T.ScrollBar.vertical: T.ScrollBar {
            id: bar

            implicitWidth: 10
            padding: 2

            contentItem: Rectangle {
                implicitWidth: 6
                radius: 3
                color: Theme.edge
                opacity: bar.size < 1 ? (bar.hovered || bar.pressed ? 0.9 : 0.4) : 0
            }
        }
    }

    Rectangle {
        anchors.fill: parent
        anchors.margins: 2
        visible: list.activeFocus
        radius: Theme.radius
        color: "transparent"
        border.color: Theme.accent
        border.width: 2
    }
}
