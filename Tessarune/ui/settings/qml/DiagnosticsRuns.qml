import QtQuick
import Tessarune
import "qrc:/controls"

// The diagnostics runs in the data folder.
Column {
    id: root

    required property DiagnosticsRunsModel runs

    Component.onCompleted: runs.refresh()
    // The panel leaves the focus where it is.
    Keys.onEscapePressed: event => {
        event.accepted = answer.visible;
        answer.close();
    }

    function place() {
        answer.run = runs.message !== "" ? rows.itemAt(runs.messageRow) : null;
        answer.visible = answer.run !== null;
    }

    // The result of the last action, over the list beside its run, so that no row moves.
    Popover {
        id: answer

        property Item run: null

        objectName: "runAnswer"
        y: {
            if (!run)
                return 0;
            const hasRoomBelow = run.mapToItem(null, 0, run.height).y + height < root.Window.height;
            return hasRoomBelow ? run.y + run.height : run.y - height;
        }
        width: root.width
        focus: false
        onClosed: root.runs.forget()

        contentItem: Column {
            spacing: Math.round(Theme.body * 0.6)

            Label {
                width: parent.width
                text: root.runs.message
                color: root.runs.isGood ? Theme.good : Theme.trouble
                Accessible.role: Accessible.AlertMessage
            }
            Label {
                width: parent.width
                visible: text !== ""
                text: root.runs.replay.trim()
                maximumLineCount: 12
                elide: Text.ElideRight
                font.pixelSize: Theme.small
            }
        }
    }

    Connections {
        target: root.runs
        function onTold() {
            root.place();
        }
        function onListChanged() {
            // The run has a new row, or the answer came while another pane was shown.
            Qt.callLater(root.place);
        }
    }

    SectionTitle {
        width: parent.width
        text: root.runs.texts.title
    }
    Label {
        width: parent.width
        visible: root.runs.isEmpty
        text: root.runs.texts.none
        color: Theme.quiet
    }

    Repeater {
        id: rows

        model: root.runs.runs

        Item {
            id: row

            required property int index
            required property var modelData
            property bool isAsking: false

            width: root.width
            height: texts.height + actions.height + Math.round(Theme.body * 1.3)

            Rectangle {
                visible: row.index > 0
                width: parent.width
                height: 1
                color: Theme.line
            }

            Column {
                id: texts
                y: Math.round(Theme.body * 0.5)
                width: parent.width
                spacing: 2

                Label {
                    width: parent.width
                    text: row.modelData.title
                }
                Label {
                    width: parent.width
                    text: row.modelData.about
                    color: Theme.quiet
                    font.pixelSize: Theme.small
                }
                Label {
                    width: parent.width
                    visible: text !== ""
                    text: row.modelData.holds
                    color: Theme.quiet
                    font.pixelSize: Theme.small
                }
            }

            Row {
                id: actions
                anchors { left: parent.left; top: texts.bottom; topMargin: Math.round(Theme.body * 0.3) }
                spacing: Math.round(Theme.body * 0.5)

                PushButton {
                    objectName: "control"
                    property string name: text + ": " + row.modelData.title
                    visible: row.modelData.canReplay
                    text: root.runs.texts.replay
                    Accessible.name: name
                    onClicked: root.runs.replayRun(row.index)
                }
                PushButton {
                    objectName: "control"
                    property string name: text + ": " + row.modelData.title
                    text: root.runs.texts.open
                    Accessible.name: name
                    onClicked: root.runs.openFolder(row.index)
                }
                PushButton {
                    objectName: "control"
                    property string name: text + ": " + row.modelData.title
                    enabled: row.modelData.canRemove
                    isPlain: true
                    text: row.isAsking ? root.runs.texts.sure : root.runs.texts.remove
                    Accessible.name: name
                    onClicked: {
                        if (row.isAsking)
                            root.runs.remove(row.index);
                        row.isAsking = !row.isAsking;
                    }
                    onActiveFocusChanged: if (!activeFocus) row.isAsking = false
                }
            }
        }
    }
}
