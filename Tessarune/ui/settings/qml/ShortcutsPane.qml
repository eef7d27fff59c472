import QtQuick
import Tessarune
import "qrc:/controls"

// The keyboard shortcuts. A click on the button with a shortcut's keys records new keys.
ScrollArea {
    id: root

    required property SettingsWindowModel model
    required property ShortcutsModel shortcuts

    PaneTitle {
        text: root.model.paneTitle
    }

    Repeater {
        model: root.shortcuts

        Item {
            id: row

            required property int index
            required property string title
            required property string keysText
            required property string conflict
            required property string problem
            required property bool recording
            required property bool changed

            width: parent ? parent.width : 0
            height: Math.max(texts.height, keys.height) + Math.round(Theme.body * 1.1)

            Rectangle {
                visible: row.index > 0
                width: parent.width
                height: 1
                color: Theme.line
            }

            Column {
                id: texts

                anchors { left: parent.left; right: restore.left; rightMargin: Theme.gap; verticalCenter: parent.verticalCenter }
                spacing: 2

                Label {
                    width: parent.width
                    text: row.title
                }
                Label {
                    width: parent.width
                    visible: text !== ""
                    text: row.recording ? root.shortcuts.texts.hint : row.problem !== "" ? row.problem : row.conflict
                    color: row.recording ? Theme.quiet : Theme.trouble
                    font.pixelSize: Theme.small
                    Accessible.role: Accessible.AlertMessage
                }
            }

            GlyphButton {
                id: restore
                anchors { right: keys.left; rightMargin: 4; verticalCenter: parent.verticalCenter }
                opacity: row.changed ? 1 : 0
                enabled: row.changed
                glyph: "restore"
                text: root.shortcuts.texts.restore
                name: text + ": " + row.title
                onClicked: root.shortcuts.restore(row.index)
            }

            PushButton {
                id: keys

                objectName: "control"
                property string name: row.title
                readonly property bool recordsKeys: row.recording

                anchors { right: off.left; rightMargin: 4; verticalCenter: parent.verticalCenter }
                width: Math.round(Theme.body * 12)
                text: row.recording ? root.shortcuts.texts.press : row.keysText === "" ? root.shortcuts.texts.none : row.keysText
                isPrimary: row.recording
                Accessible.name: row.title + ": " + text
                Accessible.description: row.conflict
                onClicked: root.shortcuts.record(row.index)
                onActiveFocusChanged: if (!activeFocus && row.recording) root.shortcuts.cancel()
                Keys.priority: Keys.BeforeItem
                Keys.enabled: row.recording
                Keys.onShortcutOverride: event => event.accepted = true
                Keys.onPressed: event => {
                    event.accepted = true;
                    root.shortcuts.press(event.key, event.modifiers, event.nativeScanCode);
                }
            }

            GlyphButton {
                id: off
                anchors { right: parent.right; verticalCenter: parent.verticalCenter }
                opacity: row.keysText === "" ? 0 : 1
                enabled: row.keysText !== ""
                glyph: "close"
                text: root.shortcuts.texts.clear
                name: text + ": " + row.title
                onClicked: root.shortcuts.clear(row.index)
            }
        }
    }

    Item {
        width: 1
        height: Math.round(Theme.body)
    }
    PushButton {
        text: root.shortcuts.texts.restoreAll
        onClicked: root.shortcuts.restoreAll()
    }
}
