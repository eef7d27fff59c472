import QtQuick
import QtQuick.Window
import Tessarune
import "qrc:/controls"

// The history window: the list, and beside it the chosen recording, the vocabulary or the usage.
Window {
    id: window

    required property HistoryWindowModel model

    title: model.texts.title
    color: Theme.window
    width: Math.round(Theme.body * 72)
    height: Math.round(Theme.body * 48)
    minimumWidth: Math.round(Theme.body * 52)
    minimumHeight: Math.round(Theme.body * 26)
    onVisibleChanged: if (!visible) model.playback.pause()

    Rectangle {
        id: side

        readonly property real wanted: Math.max(Theme.body * 20, Math.min(Theme.body * 26, window.width * 0.34))

        // Narrower than wanted only if the recording would not fit beside it.
        width: Math.round(Math.max(Theme.body * 14, Math.min(wanted, window.width - Theme.body * 32)))
        height: parent.height
        color: Theme.side

        EntryField {
            id: search

            objectName: "search"
            x: Math.round(Theme.body)
            y: Math.round(Theme.body)
            width: parent.width - 2 * x - importButton.width - Math.round(Theme.body * 0.3)
            name: window.model.texts.search
            placeholderText: name
            glyph: "search"
            text: window.model.query
            onTextEdited: window.model.query = text
            Keys.onEscapePressed: window.model.query = ""
            Keys.onDownPressed: list.forceActiveFocus()
        }

        GlyphButton {
            id: importButton

            objectName: "import"
            anchors { right: parent.right; rightMargin: Math.round(Theme.body * 0.7); verticalCenter: search.verticalCenter }
            glyph: "add"
            text: window.model.texts.import
            onClicked: window.model.imports.choose()
        }

        ImportRows {
            id: imports

            anchors { left: parent.left; leftMargin: Math.round(Theme.body * 0.7); right: parent.right; rightMargin: anchors.leftMargin; top: search.bottom; topMargin: count > 0 ? Math.round(Theme.body * 0.7) : 0 }
            height: implicitHeight
            visible: count > 0
            imports: window.model.imports
            texts: window.model.texts
        }

        // Stays for as long as recordings may be missing.
        Rectangle {
            id: problem

            anchors { left: imports.left; right: imports.right; top: imports.bottom; topMargin: visible ? Math.round(Theme.body * 0.7) : 0 }
            height: visible ? problemText.height + Math.round(Theme.body * 1.1) : 0
            visible: problemText.text !== ""
            radius: Theme.radius
            color: Theme.panel
            border.color: Theme.line

            Label {
                id: problemText

                objectName: "listProblem"
                anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter; margins: Math.round(Theme.body * 0.8) }
                text: window.model.listProblem
                maximumLineCount: 12
                elide: Text.ElideRight
                color: Theme.trouble
                font.pixelSize: Theme.small
                Accessible.role: Accessible.AlertMessage
            }
        }

        HistoryList {
            id: list

            anchors { left: parent.left; right: parent.right; top: problem.bottom; topMargin: Math.round(Theme.body * 0.6); bottom: edge.top }
            model: window.model
            focus: true
        }

        Placeholder {
            anchors.fill: list
            glyph: window.model.query.trim() === "" ? "recording" : "search"
            title: window.model.emptyTitle
            text: window.model.emptyText
            action: window.model.hasNoRecordings ? window.model.texts.importShort : ""
            onActivated: window.model.imports.choose()
        }

        Rectangle {
            id: edge

            anchors { left: parent.left; right: parent.right; bottom: pages.top; bottomMargin: Math.round(Theme.body * 0.5) }
            height: 1
            color: Theme.line
        }

        SidePages {
            id: pages

            anchors { left: parent.left; right: parent.right; bottom: parent.bottom; margins: Math.round(Theme.body * 0.7) }
            height: Theme.controlHeight
            model: window.model
        }
    }

    Rectangle {
        anchors { left: side.right; top: parent.top; bottom: parent.bottom }
        width: 1
        color: Theme.line
    }

    Item {
        id: beside

        anchors { left: side.right; leftMargin: 1; right: parent.right; top: parent.top; bottom: parent.bottom }

        HistoryDetail {
            id: detail

            anchors.fill: parent
            visible: !window.model.showsVocabulary && !window.model.showsUsage
            model: window.model
        }
        Loader {
            anchors.fill: parent
            active: window.model.showsVocabulary
            sourceComponent: VocabularyPage {
                objectName: "vocabulary"
                model: window.model
                Component.onCompleted: forceActiveFocus(Qt.TabFocusReason)
            }
        }
        Loader {
            anchors.fill: parent
            active: window.model.showsUsage
            sourceComponent: UsagePage {
                model: window.model
                Component.onCompleted: forceActiveFocus(Qt.TabFocusReason)
            }
        }
    }

    MessageBar {
        objectName: "message"
        anchors { bottom: parent.bottom; bottomMargin: Math.round(Theme.body * 1.4) + detail.barHeight; horizontalCenter: parent.horizontalCenter; horizontalCenterOffset: side.width / 2 }
        maximumWidth: window.width - side.width - 3 * Theme.body
        text: window.model.message
        action: window.model.canUndo ? window.model.texts.undo : ""
        dismissText: window.model.texts.dismiss
        onActivated: window.model.undo()
        onDismissed: window.model.dismissMessage()
    }

    DropArea {
        id: drop

        anchors.fill: parent
        onEntered: drag => drag.accepted = drag.hasUrls
        onDropped: drop => {
            window.model.imports.add(drop.urls);
            drop.accept(Qt.CopyAction);
        }
    }

    Rectangle {
        anchors { fill: parent; margins: Math.round(Theme.body * 0.6) }
        visible: drop.containsDrag
        radius: Theme.radius + 4
        color: Theme.raised
        opacity: 0.94
        border { color: Theme.accent; width: 2 }

        Placeholder {
            anchors.fill: parent
            glyph: "add"
            title: window.model.texts.drop
        }
    }

    Shortcut {
        sequences: WindowKeys.open
        onActivated: window.model.imports.choose()
    }
    Shortcut {
        sequences: WindowKeys.find
        onActivated: {
            search.forceActiveFocus();
            search.selectAll();
        }
    }
    Shortcut {
        sequences: WindowKeys.undo
        enabled: window.model.canUndo
        onActivated: window.model.undo()
    }
    Shortcut {
        sequences: WindowKeys.close
        onActivated: window.close()
    }
}
