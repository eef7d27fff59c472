import QtQuick
import QtQuick.Window
import Tessarune
import "qrc:/controls"

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

        width: Math.round(Math.max(Theme.body * 20, Math.min(Theme.body * 26, window.width * 0.34)))
        height: parent.height
        color: Theme.side

        EntryField {
            id: search

            objectName: "search"
            x: Math.round(Theme.body)
            y: Math.round(Theme.body)
            width: parent.width - 2 * x
            name: window.model.texts.search
            placeholderText: name
            glyph: "search"
            text: window.model.query
            onTextEdited: window.model.query = text
            Keys.onEscapePressed: window.model.query = ""
            Keys.onDownPressed: list.forceActiveFocus()
        }

        HistoryList {
            id: list

            anchors { left: parent.left; right: parent.right; top: search.bottom; topMargin: Math.round(Theme.body * 0.6); bottom: parent.bottom }
            model: window.model
            focus: true
        }

        Placeholder {
            anchors.fill: list
            glyph: window.model.query.trim() === "" ? "recording" : "search"
            title: window.model.emptyTitle
            text: window.model.emptyText
        }
    }

    Rectangle {
        anchors { left: side.right; top: parent.top; bottom: parent.bottom }
        width: 1
        color: Theme.line
    }

    HistoryDetail {
        anchors { left: side.right; leftMargin: 1; right: parent.right; top: parent.top; bottom: parent.bottom }
        model: window.model
    }

    MessageBar {
        anchors { bottom: parent.bottom; bottomMargin: Math.round(Theme.body * 1.4); horizontalCenter: parent.horizontalCenter; horizontalCenterOffset: side.width / 2 }
        maximumWidth: window.width - side.width - 3 * Theme.body
        text: window.model.message
        action: window.model.canUndo ? window.model.texts.undo : ""
        dismissText: window.model.texts.dismiss
        onActivated: window.model.undo()
        onDismissed: window.model.dismissMessage()
    }

    Shortcut {
        sequence: StandardKey.Find
        onActivated: {
            search.forceActiveFocus();
            search.selectAll();
        }
    }
    Shortcut {
        sequences: [StandardKey.Undo]
        enabled: window.model.canUndo
        onActivated: window.model.undo()
    }
    Shortcut {
        sequences: [StandardKey.Close]
        onActivated: window.close()
    }
}
