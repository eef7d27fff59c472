import QtQuick
import Tessarune

// Highlights the selected part of a text.
Repeater {
    id: root

    required property CaptionSelection selection
    required property int row
    required property bool isTranslation
    required property Text of

    model: selection.rects(row, isTranslation, of, of.width, selection.revision)

    delegate: Rectangle {
        required property rect modelData

        x: root.of.x + modelData.x
        y: root.of.y + modelData.y
        width: modelData.width
        height: modelData.height
        color: "#803d7bd9"
    }
}
