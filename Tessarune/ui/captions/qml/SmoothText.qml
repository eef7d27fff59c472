import QtQuick
import Tessarune

// A text that appears word by word while it is growing.
Text {
    id: root

    required property CaptionStageModel stage
    required property string source
    required property bool growing

    text: growing ? streaming.markup : source
    textFormat: growing ? Text.StyledText : Text.PlainText
    wrapMode: Text.Wrap
    lineHeight: 1.08

    StreamingText {
        id: streaming
        stage: root.stage
        text: root.source
        running: root.growing
        highlightColor: root.stage.highlightColor
    }
}
