import QtQuick
import QtQuick.Window
import Tessarune
import "qrc:/controls"

// The settings window: the search and the list of the panes, and beside them the chosen pane or the
// results of the search.
Window {
    id: window

    required property SettingsWindowModel model
    required property ResourcesModel models
    required property ResourcesModel languages
    required property TranslationTestModel test
    required property CaptionPreview preview
    required property ShortcutsModel shortcuts
    required property ProfilesModel profiles
    required property DiagnosticsRunsModel runs
    required property AboutModel about

    title: model.texts.title
    color: Theme.window
    width: Math.round(Theme.body * 66)
    height: Math.round(Theme.body * 48)
    minimumWidth: Math.round(Theme.body * 48)
    minimumHeight: Math.round(Theme.body * 26)

    Rectangle {
        id: side

        width: Math.round(Theme.body * 15)
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
            focus: true
            onTextEdited: window.model.query = text
            Keys.onEscapePressed: window.model.query = ""
            Keys.onDownPressed: panes.forceActiveFocus()
        }

        PaneList {
            id: panes

            anchors { left: parent.left; right: parent.right; top: search.bottom; topMargin: Math.round(Theme.body * 0.8); bottom: parent.bottom }
            model: window.model
        }
    }

    Rectangle {
        anchors { left: side.right; top: parent.top; bottom: parent.bottom }
        width: 1
        color: Theme.line
    }

    Item {
        anchors { left: side.right; leftMargin: 1; right: parent.right; top: parent.top; bottom: parent.bottom }

        ProblemBar {
            id: problem
            width: parent.width
            text: window.model.problem
            action: window.model.texts.renew
            onActivated: window.model.renewFile()
        }

        Loader {
            id: pane

            readonly property var byName: ({ recognition: recognition, translation: translation, captions: captions, shortcuts: shortcuts, advanced: advanced, about: about })

            objectName: "pane"
            anchors { left: parent.left; right: parent.right; top: problem.bottom; bottom: parent.bottom }
            sourceComponent: window.model.isSearching ? found : byName[window.model.pane] || plain
        }
    }

    // A pane without a view of its own.
    Component {
        id: plain

        ScrollArea {
            PaneTitle {
                text: window.model.paneTitle
            }
            SettingRows {
                width: parent.width
                model: window.model
                rows: window.model.rows
            }
        }
    }

    Component {
        id: recognition

        RecognitionPane {
            model: window.model
            models: window.models
        }
    }

    Component {
        id: translation

        TranslationPane {
            model: window.model
            languages: window.languages
            test: window.test
        }
    }

    Component {
        id: captions

        CaptionsPane {
            model: window.model
            preview: window.preview
        }
    }

    Component {
        id: shortcuts

        ShortcutsPane {
            model: window.model
            shortcuts: window.shortcuts
        }
    }

    Component {
        id: advanced

        AdvancedPane {
            model: window.model
            profiles: window.profiles
            runs: window.runs
        }
    }

    Component {
        id: about

        AboutPane {
            about: window.about
        }
    }

    Component {
        id: found

        ScrollArea {
            PaneTitle {
                text: window.model.foundNothing ? window.model.texts.nothing : window.model.query
            }
            SettingRows {
                width: parent.width
                model: window.model
                rows: window.model.found
            }
        }
    }

    Shortcut {
        sequences: WindowKeys.find
        onActivated: search.forceActiveFocus()
    }
    Shortcut {
        sequences: WindowKeys.close
        onActivated: window.close()
    }
}
