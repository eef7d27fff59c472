import QtQuick
import Tessarune
import "qrc:/controls"

// The words of the recording, counted by lemma.
FocusScope {
    id: root

    required property HistoryWindowModel model
    property bool hasPlaces: true
    signal placeWanted(int sentence)

    Rectangle {
        width: 1
        height: parent.height
        color: Theme.line
    }

    Label {
        id: summary

        x: Math.round(Theme.body * 1.2)
        y: Math.round(Theme.body * 0.2)
        width: parent.width - 2 * x
        text: root.model.words.summary
        color: Theme.quiet
        font.pixelSize: Theme.small
    }

    WordRows {
        anchors { left: summary.left; right: summary.right; top: summary.bottom; topMargin: Math.round(Theme.body * 0.6); bottom: parent.bottom; bottomMargin: Math.round(Theme.body) }
        focus: true
        words: root.model.words
        card: root.model.card
        texts: root.model.texts
        hasPlaces: root.hasPlaces
        onPlaceWanted: word => {
            const sentence = root.model.words.nextPlace(word);
            if (sentence >= 0)
                root.placeWanted(sentence);
        }
    }
}
