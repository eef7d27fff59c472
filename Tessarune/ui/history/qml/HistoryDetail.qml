import QtQuick
import Tessarune
import "qrc:/controls"

// The chosen recording: its title and actions, its note, its refinement, its transcript, its words
// and its playback.
Item {
    id: root

    required property HistoryWindowModel model
    readonly property HistoryDetailModel detail: model.detail
    readonly property real margin: Math.round(Theme.body * 1.7)
    // Of the playback controls, which a message must not cover.
    readonly property real barHeight: bar.height
    readonly property bool showsWords: model.words.isOpen && !detail.isRunning
    // The words panel is beside the transcript, or takes its place if there is no room for both.
    readonly property real wordsWidth: width < Theme.body * 44 ? width : Math.round(Math.max(Theme.body * 22, Math.min(Theme.body * 28, width * 0.44)))

    Column {
        id: header

        visible: root.detail.isShown
        x: root.margin
        y: root.margin - Math.round(Theme.body * 0.3)
        width: parent.width - 2 * root.margin
        spacing: Math.round(Theme.body * 0.9)

        Item {
            width: parent.width
            height: Theme.controlHeight

            Label {
                id: title

                anchors { left: parent.left; right: tools.left; rightMargin: Theme.gap; verticalCenter: parent.verticalCenter }
                // The first form that fits. The shortest form, the end of the title, has only the
                // time of day, because the list of recordings shows the date.
                readonly property var forms: [root.detail.title + "   " + root.detail.duration, root.detail.title, root.detail.title.slice(-5)]
                text: forms.find(form => measure.advanceWidth(form) <= width) ?? forms[2]
                wrapMode: Text.NoWrap
                elide: Text.ElideRight
                font.pixelSize: Theme.heading
                font.weight: Font.Medium
            }

            FontMetrics {
                id: measure

                font: title.font
            }

            Row {
                id: tools

                anchors { right: parent.right; verticalCenter: parent.verticalCenter }
                spacing: Math.round(Theme.body * 0.3)

                SegmentedChoice {
                    anchors.verticalCenter: parent.verticalCenter
                    name: root.model.texts.language
                    choices: [root.model.texts.source, root.model.texts.bilingual]
                    current: root.detail.mode
                    onChosen: index => root.detail.mode = index
                }
                Item {
                    width: Math.round(Theme.body * 0.4)
                    height: 1
                }
                GlyphButton {
                    id: wordsButton

                    objectName: "openWords"
                    anchors.verticalCenter: parent.verticalCenter
                    enabled: !root.detail.isRunning
                    opacity: enabled ? 1 : 0.4
                    glyph: "words"
                    isOn: root.showsWords
                    text: root.model.texts.words
                    Accessible.checkable: true
                    Accessible.checked: isOn
                    onClicked: root.model.words.isOpen = !isOn
                }
                GlyphButton {
                    id: refineButton

                    objectName: "refine"
                    anchors.verticalCenter: parent.verticalCenter
                    enabled: root.model.refinement.canRefine
                    opacity: enabled ? 1 : 0.4
                    glyph: "refine"
                    text: root.model.texts.refine
                    hidesHint: refinePanel.visible
                    onClicked: refinePanel.open()

                    RefinePanel {
                        id: refinePanel

                        x: refineButton.width - width
                        y: refineButton.height + 4
                        refinement: root.model.refinement
                        texts: root.model.texts
                    }
                }
                GlyphButton {
                    objectName: "copy"
                    anchors.verticalCenter: parent.verticalCenter
                    enabled: root.detail.hasText
                    opacity: enabled ? 1 : 0.4
                    glyph: "copy"
                    text: root.detail.mode === 1 && root.detail.hasTranslation ? root.model.texts.copyBoth : root.model.texts.copySource
                    onClicked: root.model.copy(root.detail.mode === 1)
                }
                GlyphButton {
                    id: exportButton

                    objectName: "export"
                    anchors.verticalCenter: parent.verticalCenter
                    enabled: !root.detail.isRunning
                    opacity: enabled ? 1 : 0.4
                    glyph: "share"
                    text: root.model.texts.export
                    hidesHint: exportPanel.visible
                    onClicked: exportPanel.open()

                    ExportPanel {
                        id: exportPanel

                        x: exportButton.width - width
                        y: exportButton.height + 4
                        model: root.model.exports
                        texts: root.model.texts
                    }
                }
                GlyphButton {
                    objectName: "delete"
                    anchors.verticalCenter: parent.verticalCenter
                    enabled: !root.detail.isRunning
                    opacity: enabled ? 1 : 0.4
                    glyph: "trash"
                    text: root.model.texts.delete
                    onClicked: root.model.deleteCurrent()
                }
            }
        }

        EntryField {
            id: note

            objectName: "note"
            width: parent.width
            name: root.model.texts.note
            placeholderText: name
            text: root.detail.note
            onTextEdited: root.model.draftNote(text)
            onEditingFinished: root.model.setNote(text)
            Keys.onEscapePressed: {
                root.model.discardDraft();
                text = Qt.binding(() => root.detail.note);
                focus = false;
            }
        }

        RefinementBar {
            width: parent.width
            refinement: root.model.refinement
            texts: root.model.texts
        }

        Label {
            width: parent.width
            visible: root.detail.hint !== "" && root.detail.hasText
            text: root.detail.hint
            color: Theme.quiet
            font.pixelSize: Theme.small
        }

        Label {
            width: parent.width
            visible: text !== ""
            text: root.model.playback.problem
            color: Theme.trouble
            font.pixelSize: Theme.small
        }
    }

    TranscriptList {
        id: transcript

        anchors { left: parent.left; right: parent.right; rightMargin: root.showsWords ? root.wordsWidth : 0; top: header.bottom; topMargin: Math.round(Theme.body * 0.8); bottom: bar.top }
        visible: root.detail.isShown && width > 0
        detail: root.detail
        playback: root.model.playback
        texts: root.model.texts
        margin: root.margin
    }

    WordsPanel {
        anchors { right: parent.right; top: header.bottom; topMargin: Math.round(Theme.body * 0.8); bottom: bar.top }
        width: root.wordsWidth
        visible: root.detail.isShown && root.showsWords
        model: root.model
        hasPlaces: transcript.visible
        onPlaceWanted: sentence => transcript.showSentence(sentence)
        onVisibleChanged: if (visible) forceActiveFocus(Qt.TabFocusReason)
        Keys.onEscapePressed: {
            root.model.words.isOpen = false;
            wordsButton.forceActiveFocus(Qt.TabFocusReason);
        }
    }

    PlaybackBar {
        id: bar

        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: implicitHeight
        playback: root.model.playback
        texts: root.model.texts
    }

    Placeholder {
        anchors { left: parent.left; right: parent.right; top: header.bottom; bottom: bar.top }
        visible: root.detail.hint !== "" && !root.detail.hasText && !root.showsWords
        glyph: root.detail.isRunning ? "recording" : "captions"
        title: root.detail.hasText ? "" : root.detail.hint
        action: root.detail.hint !== "" && root.model.refinement.canRefine ? root.model.texts.refine : ""
        onActivated: refinePanel.open()
    }

    Shortcut {
        sequences: WindowKeys.save
        enabled: root.detail.isShown && !root.detail.isRunning
        onActivated: exportPanel.open()
    }
}
