import QtQuick
import Tessarune
import "qrc:/controls"

// A word with its meanings, its marks, its page in a dictionary and its pronunciation.
Rectangle {
    id: root

    required property WordCardModel card
    required property var texts
    // Whether the word's next place in the transcript can be shown.
    property bool hasPlaces: false
    signal closed
    signal placeWanted

    implicitHeight: head.height + senses.contentHeight + Math.round(Theme.body * 2)
    visible: card.word !== ""
    radius: Theme.radius + 2
    color: Theme.panel
    border.color: Theme.line
    Accessible.role: Accessible.Grouping
    Accessible.name: card.word

    Keys.onEscapePressed: closed()

    Item {
        id: head

        x: Math.round(Theme.body)
        y: Math.round(Theme.body * 0.6)
        width: parent.width - 2 * x
        height: Theme.controlHeight

        Label {
            anchors { left: parent.left; right: tools.left; rightMargin: Theme.gap; verticalCenter: parent.verticalCenter }
            text: root.card.word
            wrapMode: Text.NoWrap
            elide: Text.ElideRight
            font.pixelSize: Theme.heading
            font.weight: Font.Medium
            Accessible.role: Accessible.Heading
        }

        Row {
            id: tools

            anchors { right: parent.right; rightMargin: -Math.round(Theme.body * 0.4); verticalCenter: parent.verticalCenter }
            spacing: Math.round(Theme.body * 0.2)

            GlyphButton {
                objectName: "nextPlace"
                visible: root.hasPlaces
                glyph: "captions"
                text: root.texts.nextPlace
                onClicked: root.placeWanted()
            }
            GlyphButton {
                objectName: "hear"
                visible: root.card.canHear
                glyph: root.card.isHeard || root.card.isFetching ? "stop" : "speaker"
                isOn: root.card.isHeard || root.card.isFetching
                text: isOn ? root.texts.stopSound : root.texts.hear
                onClicked: root.card.hear()
            }
            GlyphButton {
                objectName: "lookUp"
                glyph: "book"
                text: root.texts.lookUp
                onClicked: root.card.lookUp()
            }
            GlyphButton {
                objectName: "known"
                glyph: "check"
                isOn: root.card.isKnown
                text: root.texts.known
                Accessible.checkable: true
                Accessible.checked: isOn
                onClicked: root.card.isKnown = !isOn
            }
            GlyphButton {
                objectName: "favorite"
                glyph: "star"
                isOn: root.card.isFavorite
                text: root.texts.favorite
                Accessible.checkable: true
                Accessible.checked: isOn
                onClicked: root.card.isFavorite = !isOn
            }
            GlyphButton {
                glyph: "close"
                text: root.texts.closeCard
                onClicked: root.closed()
            }
        }
    }

    ScrollArea {
        id: senses

        anchors { left: parent.left; right: parent.right; top: head.bottom; bottom: parent.bottom; bottomMargin: 1 }
        margin: Math.round(Theme.body)
        topMargin: -Math.round(Theme.body * 0.6)

        Repeater {
            model: root.card.senses

            Label {
                required property string modelData

                width: parent.width
                bottomPadding: Math.round(Theme.body * 0.4)
                text: modelData
                font.pixelSize: Theme.small
            }
        }
        ProgressLine {
            width: parent.width
            visible: root.card.isFetching
            name: root.texts.hear
            indeterminate: true
        }
        Label {
            width: parent.width
            visible: text !== ""
            bottomPadding: Math.round(Theme.body * 0.4)
            text: root.card.hint
            color: Theme.quiet
            font.pixelSize: Theme.small
        }
        Label {
            width: parent.width
            text: root.texts.network
            color: Theme.quiet
            font.pixelSize: Theme.small
        }
    }
}
