import QtQuick
import Tessarune
import "qrc:/controls"

// The progress of the recording's refinement, or why it failed.
Item {
    id: root

    required property HistoryRefinementModel refinement
    required property var texts

    height: Math.max(words.height, cancel.visible ? cancel.height : 0)
    visible: refinement.isBusy || refinement.problem !== ""

    Column {
        id: words

        anchors { left: parent.left; right: cancel.visible ? cancel.left : parent.right; rightMargin: cancel.visible ? Theme.gap : 0; verticalCenter: parent.verticalCenter }
        spacing: Math.round(Theme.body * 0.4)

        Label {
            width: parent.width
            text: root.refinement.isBusy ? root.refinement.stateText : root.refinement.problem
            color: root.refinement.isBusy ? Theme.quiet : Theme.trouble
            font.pixelSize: Theme.small
        }
        ProgressLine {
            width: parent.width
            visible: root.refinement.isBusy
            name: root.refinement.stateText
            indeterminate: root.refinement.progress < 0
            value: Math.max(0, root.refinement.progress)
        }
    }

    PushButton {
        id: cancel

        objectName: "cancelRefine"
        anchors { right: parent.right; verticalCenter: parent.verticalCenter }
        visible: root.refinement.isBusy
        text: root.texts.cancel
        onClicked: root.refinement.cancel()
    }
}
