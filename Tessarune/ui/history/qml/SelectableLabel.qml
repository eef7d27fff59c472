import QtQuick
import Tessarune

// A text of which parts can be selected with the pointer and copied.
TextEdit {
    id: root

    // A click that selects nothing, at this character.
    signal pressedAt(int character)

    readOnly: true
    selectByMouse: true
    activeFocusOnTab: false
    textFormat: TextEdit.PlainText
    wrapMode: TextEdit.Wrap
    color: Theme.text
    selectionColor: Theme.accent
    selectedTextColor: Theme.overAccent
    font.pixelSize: Theme.body
    Accessible.role: Accessible.StaticText
    Accessible.name: text

    TapHandler {
        onTapped: eventPoint => {
            if (root.selectedText === "")
                root.pressedAt(root.positionAt(eventPoint.position.x, eventPoint.position.y));
        }
    }
}
