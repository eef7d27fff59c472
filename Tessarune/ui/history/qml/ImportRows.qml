import QtQuick
import QtQuick.Templates as T
import Tessarune
import "qrc:/controls"

// The files that wait, are being imported or have failed. Each has a button that cancels the import
// or, after a failure, removes the row.
ListView {
    id: root

    required property HistoryImportsModel imports
    required property var texts

    objectName: "imports"
    implicitHeight: Math.min(contentHeight, Math.round(Theme.body * 16))
    clip: true
    spacing: Math.round(Theme.body * 0.4)
    boundsBehavior: Flickable.StopAtBounds
    model: imports
    Accessible.role: Accessible.List
    Accessible.name: texts.importing
    T.ScrollBar.vertical: ListBar {}

    function reveal(row: int) {
        for (let i = 0; i < count; ++i)
            itemAtIndex(i)?.settle();
        forceLayout();
        positionViewAtIndex(row, ListView.Contain);
    }

    Connections {
        target: root.imports
        function onAttentionWanted(row: int) {
            Qt.callLater(root.reveal, row); // the view has to know the new rows first
        }
    }

    delegate: Rectangle {
        id: row

        required property int index
        required property string name
        required property string stateText
        required property bool failed
        required property real progress

        width: ListView.view.width
        height: words.height + Math.round(Theme.body * 1.1)
        radius: Theme.radius
        color: Theme.panel
        border.color: Theme.line
        Accessible.role: Accessible.ListItem
        Accessible.name: name + ", " + stateText

        // Takes the height of a changed text at once.
        function settle() {
            words.forceLayout();
        }

        Column {
            id: words

            anchors { left: parent.left; leftMargin: Math.round(Theme.body * 0.8); right: away.left; rightMargin: Math.round(Theme.body * 0.4); verticalCenter: parent.verticalCenter }
            spacing: Math.round(Theme.body * 0.3)

            Label {
                width: parent.width
                text: row.name
                wrapMode: Text.NoWrap
                elide: Text.ElideMiddle
                Accessible.ignored: true
            }
            Label {
                width: parent.width
                text: row.stateText
                maximumLineCount: 4
                elide: Text.ElideRight
                color: row.failed ? Theme.trouble : Theme.quiet
                font.pixelSize: Theme.small
                Accessible.ignored: true
            }
            ProgressLine {
                width: parent.width
                visible: row.progress >= 0
                name: row.name
                value: Math.max(0, row.progress)
            }
        }

        GlyphButton {
            id: away

            objectName: "removeImport"
            anchors { right: parent.right; rightMargin: Math.round(Theme.body * 0.3); verticalCenter: parent.verticalCenter }
            glyph: "close"
            text: row.failed ? root.texts.dismiss : root.texts.cancelImport
            name: text + ": " + row.name
            onClicked: root.imports.remove(row.index)
        }
    }
}
