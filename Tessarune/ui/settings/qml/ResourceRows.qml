import QtQuick
import Tessarune
import "qrc:/controls"

// Models or languages as rows: one of them is chosen, and each can be downloaded or removed.
Column {
    id: root

    required property ResourcesModel resources

    Label {
        width: root.width
        visible: text !== ""
        bottomPadding: Math.round(Theme.body * 0.5)
        text: root.resources.problem
        color: Theme.trouble
        Accessible.role: Accessible.AlertMessage
    }

    Repeater {
        model: root.resources

        Item {
            id: row

            required property int index
            required property string title
            required property string flag
            required property string detail
            required property string note
            required property string problem
            required property bool chosen
            required property bool canChoose
            required property bool canDownload
            required property bool canRemove
            required property bool loading
            required property real progress

            width: root.width
            height: Math.max(texts.height, actions.height) + Math.round(Theme.body * 1.1)

            Rectangle {
                visible: row.index > 0
                width: parent.width
                height: 1
                color: Theme.line
            }

            ChoiceDot {
                id: dot
                objectName: "control"
                anchors { left: parent.left; verticalCenter: parent.verticalCenter }
                checked: row.chosen
                enabled: row.canChoose
                text: row.title
                Accessible.description: row.detail + ". " + row.note
                onClicked: root.resources.choose(row.index)
            }

            Text {
                id: flag
                anchors { left: dot.right; leftMargin: row.flag === "" ? 0 : Math.round(Theme.body * 0.5); verticalCenter: parent.verticalCenter }
                width: row.flag === "" ? 0 : Math.round(Theme.body * 2)
                text: row.flag
                font.pixelSize: Math.round(Theme.body * 1.4)
                font.family: "Noto Color Emoji"
                Accessible.ignored: true
            }

            Column {
                id: texts

                anchors { left: flag.right; leftMargin: Math.round(Theme.body * 0.6); right: actions.left; rightMargin: Theme.gap; verticalCenter: parent.verticalCenter }
                spacing: 3

                Label {
                    width: parent.width
                    text: row.title
                    font.weight: row.chosen ? Font.Medium : Font.Normal
                    Accessible.ignored: true
                }
                Label {
                    width: parent.width
                    visible: text !== ""
                    text: row.note === "" ? row.detail : row.detail === "" ? row.note : row.detail + "\n" + row.note
                    color: Theme.quiet
                    font.pixelSize: Theme.small
                }
                ProgressLine {
                    width: parent.width
                    visible: row.loading
                    name: row.title + ": " + row.detail
                    indeterminate: row.progress < 0
                    value: Math.max(0, row.progress)
                }
                Label {
                    width: parent.width
                    visible: text !== ""
                    text: row.problem
                    color: Theme.trouble
                    font.pixelSize: Theme.small
                    Accessible.role: Accessible.AlertMessage
                }
            }

            MouseArea {
                anchors { left: parent.left; right: actions.left; top: parent.top; bottom: parent.bottom }
                enabled: row.canChoose
                onClicked: root.resources.choose(row.index)
            }

            Row {
                id: actions

                anchors { right: parent.right; verticalCenter: parent.verticalCenter }

                PushButton {
                    visible: row.canDownload
                    text: root.resources.texts.download
                    Accessible.name: text + ": " + row.title
                    onClicked: root.resources.download(row.index)
                }
                PushButton {
                    visible: row.loading
                    text: root.resources.texts.stop
                    Accessible.name: text + ": " + row.title
                    onClicked: root.resources.stop(row.index)
                }
                PushButton {
                    visible: row.canRemove
                    isPlain: true
                    text: root.resources.texts.remove
                    Accessible.name: text + ": " + row.title
                    onClicked: root.resources.remove(row.index)
                }
            }
        }
    }
}
