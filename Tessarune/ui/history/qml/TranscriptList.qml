import QtQuick
import QtQuick.Templates as T
import Tessarune
import "qrc:/controls"

// The rows of a transcript. Up and Down go from row to row, Return plays the row, and Space or K
// starts and pauses. Left and Right skip 5 seconds, J and L skip 10. Alt with Left or Right goes
// from sentence to sentence, R repeats the sentence, and plus and minus change the speed.
FocusScope {
    id: root

    required property HistoryDetailModel detail
    required property HistoryPlaybackModel playback
    required property var texts
    required property real margin

    function showSentence(sentence: int) {
        const row = root.detail.rows.nearestRow(sentence);
        list.currentIndex = row;
        list.positionViewAtIndex(row, ListView.Center);
        root.playback.focusRow(row);
    }

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
        Accessible.name: root.texts.transcript

        keyNavigationEnabled: true
        highlightMoveDuration: 0
        highlightRangeMode: ListView.NoHighlightRange
        onActiveFocusChanged: if (activeFocus && currentIndex < 0) currentIndex = Math.max(0, activeRow)

        function scroll(by: real) {
            contentY = Math.max(originY, Math.min(contentY + by, originY + Math.max(0, contentHeight + bottomMargin - height)));
            currentIndex = Math.max(0, indexAt(width / 2, contentY + height / 2));
        }

        Keys.onPressed: event => {
            if (event.modifiers & Qt.ControlModifier)
                return;
            const isAlt = event.modifiers & Qt.AltModifier;
            if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter)
                root.playback.playRow(currentIndex);
            else if (event.key === Qt.Key_Space || event.key === Qt.Key_K)
                root.playback.toggle();
            else if (isAlt && (event.key === Qt.Key_Left || event.key === Qt.Key_Right))
                root.playback.stepSentence(event.key === Qt.Key_Left ? -1 : 1);
            else if (event.key === Qt.Key_J || event.key === Qt.Key_Left)
                root.playback.skip(event.key === Qt.Key_J ? -10 : -5);
            else if (event.key === Qt.Key_L || event.key === Qt.Key_Right)
                root.playback.skip(event.key === Qt.Key_L ? 10 : 5);
            else if (event.key === Qt.Key_R)
                root.playback.toggleRepeat();
            else if (event.key === Qt.Key_Plus || event.key === Qt.Key_Minus)
                root.playback.stepRate(event.key === Qt.Key_Plus ? 1 : -1);
            else if (event.key === Qt.Key_PageDown)
                scroll(height * 0.9);
            else if (event.key === Qt.Key_PageUp)
                scroll(-height * 0.9);
            else if (event.key === Qt.Key_Home)
                currentIndex = 0;
            else if (event.key === Qt.Key_End)
                currentIndex = count - 1;
            else
                return;
            event.accepted = true;
        }

        // While a session runs, keeps the newest row visible unless the user has scrolled up.
        onCountChanged: if (root.detail.isRunning && wasAtEnd) Qt.callLater(positionViewAtEnd)
        onContentYChanged: wasAtEnd = atYEnd
        property bool wasAtEnd: true

        // Keeps the playing row visible.
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
            Accessible.role: Accessible.ListItem
            Accessible.name: [time, source, translation].filter(part => part !== "").join(", ")
            Accessible.selected: ListView.isCurrentItem

            Rectangle {
                visible: row.isActive
                anchors { fill: parent; leftMargin: root.margin - Theme.body * 0.6; rightMargin: anchors.leftMargin; topMargin: -Theme.body * 0.3; bottomMargin: anchors.topMargin }
                radius: Theme.radius
                color: Theme.chosen
            }

            Rectangle {
                visible: row.ListView.isCurrentItem && list.activeFocus
                anchors { fill: parent; leftMargin: root.margin - Theme.body * 0.6; rightMargin: anchors.leftMargin; topMargin: -Theme.body * 0.3; bottomMargin: anchors.topMargin }
                radius: Theme.radius
                color: "transparent"
                border { color: Theme.accent; width: 1 }
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
                    onPressedAt: character => {
                        list.forceActiveFocus();
                        list.currentIndex = row.index;
                        root.playback.playWord(row.index, character);
                    }
                }
                SelectableLabel {
                    width: parent.width
                    visible: row.translation !== ""
                    text: row.translation
                    color: Theme.quiet
                }
            }
        }

        T.ScrollBar.vertical: ListBar {}
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
