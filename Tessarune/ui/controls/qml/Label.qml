import QtQuick
import Tessarune

// A plain text in the style of the windows.
Text {
    textFormat: Text.PlainText
    wrapMode: Text.Wrap
    color: Theme.text
    font.pixelSize: Theme.body
    lineHeight: 1.1
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: text === ""
}
