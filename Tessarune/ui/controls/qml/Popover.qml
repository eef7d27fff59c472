import QtQuick
import QtQuick.Templates as T
import Tessarune

// A small panel that a button opens over the window. Escape or a press outside closes it.
T.Popup {
    margins: 8
    padding: Math.round(Theme.body * 1.1)
    height: contentItem.implicitHeight + topPadding + bottomPadding
    focus: true
    modal: false
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside

    background: Rectangle {
        radius: Theme.radius + 4
        color: Theme.panel
        border.color: Theme.line
    }
}
