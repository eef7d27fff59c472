import QtQuick
import Tessarune
import "qrc:/controls"

// The words that the user marked or has still to learn, and the choice of the dictionary and the
// source of pronunciation.
FocusScope {
    id: root

    required property HistoryWindowModel model
    readonly property real margin: Math.round(Theme.body * 1.7)

    Column {
        id: header

        x: root.margin
        y: root.margin - Math.round(Theme.body * 0.3)
        width: parent.width - 2 * root.margin
        spacing: Math.round(Theme.body * 0.9)

        Item {
            width: parent.width
            height: Theme.controlHeight

            Label {
                anchors.verticalCenter: parent.verticalCenter
                text: root.model.texts.vocabulary
                font.pixelSize: Theme.heading
                font.weight: Font.Medium
                Accessible.role: Accessible.Heading
            }
            Label {
                anchors { right: parent.right; verticalCenter: parent.verticalCenter }
                text: root.model.vocabulary.summary
                color: Theme.quiet
                font.pixelSize: Theme.small
            }
        }

        Column {
            width: parent.width
            spacing: Math.round(Theme.body * 0.4)

            Label {
                width: parent.width
                text: root.model.vocabulary.progressText
                color: Theme.quiet
                font.pixelSize: Theme.small
            }
            ProgressLine {
                width: parent.width
                name: root.model.vocabulary.progressText
                value: root.model.vocabulary.progress
            }
        }

        Flow {
            width: parent.width
            spacing: Math.round(Theme.body * 0.8)

            Label {
                height: Theme.controlHeight
                verticalAlignment: Text.AlignVCenter
                text: root.model.texts.dictionary
                Accessible.ignored: true
            }
            ChoiceBox {
                objectName: "dictionary"
                width: Math.round(Theme.body * 17)
                name: root.model.texts.dictionary
                model: root.model.card.dictionaries
                currentIndex: root.model.card.dictionary
                onActivated: index => root.model.card.dictionary = index
            }
            Label {
                height: Theme.controlHeight
                visible: root.model.card.canHear
                verticalAlignment: Text.AlignVCenter
                text: root.model.texts.voice
                Accessible.ignored: true
            }
            ChoiceBox {
                objectName: "voice"
                width: Math.round(Theme.body * 12)
                visible: root.model.card.canHear
                name: root.model.texts.voice
                model: root.model.card.voices
                currentIndex: root.model.card.voice
                onActivated: index => root.model.card.voice = index
            }
        }
    }

    WordRows {
        anchors { left: header.left; right: header.right; top: header.bottom; topMargin: Math.round(Theme.body * 0.9); bottom: parent.bottom; bottomMargin: Math.round(Theme.body) }
        focus: true
        words: root.model.vocabulary
        card: root.model.card
        texts: root.model.texts
        canRemove: root.model.vocabulary.canRemove
        onRemoved: row => root.model.vocabulary.remove(row)
    }
}
