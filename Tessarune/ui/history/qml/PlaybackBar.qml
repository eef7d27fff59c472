import QtQuick
import Tessarune
import "qrc:/controls"

// Plays the recording: start and pause, the sentence before and after, position, repetition, speed.
Item {
    id: root

    required property HistoryPlaybackModel playback
    required property var texts

    implicitHeight: visible ? Math.round(Theme.body * 3.6) : 0
    visible: playback.isAvailable

    Rectangle {
        width: parent.width
        height: 1
        color: Theme.line
    }

    Row {
        anchors { fill: parent; leftMargin: Math.round(Theme.body * 1.4); rightMargin: anchors.leftMargin }
        spacing: Math.round(Theme.body * 0.7)

        GlyphButton {
            objectName: "play"
            anchors.verticalCenter: parent.verticalCenter
            glyph: root.playback.isPlaying ? "pause" : "play"
            text: root.playback.isPlaying ? root.texts.pause : root.texts.play
            onClicked: root.playback.toggle()
        }

        Row {
            anchors.verticalCenter: parent.verticalCenter

            GlyphButton {
                objectName: "previousSentence"
                glyph: "previous"
                text: root.texts.previousSentence
                onClicked: root.playback.stepSentence(-1)
            }
            GlyphButton {
                objectName: "nextSentence"
                glyph: "next"
                text: root.texts.nextSentence
                onClicked: root.playback.stepSentence(1)
            }
        }

        Label {
            anchors.verticalCenter: parent.verticalCenter
            width: Math.round(Theme.body * 4)
            horizontalAlignment: Text.AlignRight
            text: root.playback.positionText
            color: Theme.quiet
            font.pixelSize: Theme.small
        }

        ValueSlider {
            id: place

            objectName: "place"
            anchors.verticalCenter: parent.verticalCenter
            width: parent.width - x - rest.width - parent.spacing
            name: root.texts.place
            from: 0
            to: Math.max(0.1, root.playback.duration)
            onMoved: root.playback.seek(value)

            Binding on value {
                when: !place.pressed
                value: root.playback.position
            }
        }

        Row {
            id: rest

            anchors.verticalCenter: parent.verticalCenter
            spacing: Math.round(Theme.body * 0.5)

            Label {
                anchors.verticalCenter: parent.verticalCenter
                text: root.playback.durationText
                color: Theme.quiet
                font.pixelSize: Theme.small
            }
            GlyphButton {
                objectName: "repeat"
                anchors.verticalCenter: parent.verticalCenter
                glyph: "repeat"
                isOn: root.playback.repeats
                text: root.texts.repeat
                onClicked: root.playback.toggleRepeat()
            }
            ChoiceBox {
                objectName: "rate"
                anchors.verticalCenter: parent.verticalCenter
                width: fittingWidth
                name: root.texts.rate
                model: root.playback.rates
                currentIndex: root.playback.rateIndex
                onActivated: index => root.playback.rateIndex = index
            }
        }
    }
}
