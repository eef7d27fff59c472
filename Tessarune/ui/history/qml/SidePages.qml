import QtQuick
import QtQuick.Templates as T
import Tessarune
import "qrc:/controls"

// The buttons of the pages for vocabulary and usage.
Row {
    id: root

    required property HistoryWindowModel model

    spacing: Math.round(Theme.body * 0.4)

    component PageButton: T.AbstractButton {
        id: button

        required property string glyph

        height: Theme.controlHeight
        focusPolicy: Qt.StrongFocus
        Accessible.role: Accessible.PageTab
        Accessible.name: text
        Accessible.selected: checked
        Accessible.onPressAction: if (enabled) clicked()
        Keys.forwardTo: PressKeys { onPressed: button.clicked() }

        contentItem: Item {
            Row {
                anchors.centerIn: parent
                spacing: Math.round(Theme.body * 0.5)

                Glyph {
                    anchors.verticalCenter: parent.verticalCenter
                    name: button.glyph
                    color: button.checked ? Theme.accent : Theme.quiet
                }
                Text {
                    anchors.verticalCenter: parent.verticalCenter
                    text: button.text
                    textFormat: Text.PlainText
                    color: button.checked ? Theme.accent : Theme.text
                    font.pixelSize: Theme.body
                }
            }
        }

        background: Rectangle {
            radius: Theme.radius
            color: button.checked ? Theme.chosen : button.hovered ? Theme.hovered : "transparent"
            border.color: button.visualFocus ? Theme.accent : "transparent"
            border.width: 2
        }
    }

    PageButton {
        objectName: "vocabularyPage"
        width: (root.width - root.spacing) / 2
        glyph: "book"
        text: root.model.texts.vocabulary
        checked: root.model.showsVocabulary
        onClicked: checked ? root.model.openRecording() : root.model.openVocabulary()
    }
    PageButton {
        objectName: "usagePage"
        width: (root.width - root.spacing) / 2
        glyph: "chart"
        text: root.model.texts.usage
        checked: root.model.showsUsage
        onClicked: checked ? root.model.openRecording() : root.model.openUsage()
    }
}
