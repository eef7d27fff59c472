import QtQuick
import QtQuick.Templates as T
import Tessarune
import "qrc:/controls"

// The rows of a transcript. Up and down scroll it, page by page with the keys for that.
FocusScope {
    id: root

    required property HistoryDetailModel detail
    required property HistoryPlaybackModel playback
    required property var texts
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
            if (event.key === Qt.Key_Space || event.key === Qt.Key_K)
                root.playback.toggle();
            else if (event.key === Qt.Key_J || event.key === Qt.Key_Left)
                root.playback.skip(event.key === Qt.Key_J ? -10 : -5);
            else if (event.key === Qt.Key_L || event.key === Qt.Key_Right)
                root.playback.skip(event.key === Qt.Key_L ? 10 : 5);
            else if (event.key === Qt.Key_PageDown)
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

        // What is heard is in sight.
        readonly property int activeRow: root.playback.activeRow
        onActiveRowChanged: if (activeRow >= 0 && root.playback.isPlaying) positionViewAtIndex(activeRow, ListView.Contain)

        delegate: Item {
            id: row

            required property int index
            readonly property bool isActive: list.activeRow === index

            required property string time
            required property string source
            required property string translation

            readonly property real timeWidth: root.detail.isTimed ? Math.round(Theme.body * 4.2) : 0

            width: ListView.view.width
            height: texts.height

            Rectangle {
                visible: row.isActive
                anchors { fill: parent; leftMargin: root.margin - Theme.body * 0.6; rightMargin: anchors.leftMargin; topMargin: -Theme.body * 0.3; bottomMargin: anchors.topMargin }
                radius: Theme.radius
                color: Theme.chosen
            }

            Label {
                id: time

                x: root.margin
                y: Math.round(Theme.body * 0.14)
                visible: text !== ""
                text: row.time
                color: area.containsMouse || row.isActive ? Theme.accent : Theme.quiet
                font.pixelSize: Theme.small
                font.underline: area.containsMouse
                Accessible.role: Accessible.Button
                Accessible.name: root.texts.playSentence + " " + row.time
                Accessible.onPressAction: root.playback.playRow(row.index)

                MouseArea {
                    id: area

                    anchors { fill: parent; margins: -Math.round(Theme.body * 0.3) }
                    enabled: root.playback.isAvailable
                    hoverEnabled: enabled
                    cursorShape: Qt.PointingHandCursor
                    onClicked: {
                        list.forceActiveFocus();
                        root.playback.playRow(row.index);
                    }
                }
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
