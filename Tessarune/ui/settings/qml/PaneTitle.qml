import QtQuick
import Tessarune
import "qrc:/controls"

// The heading of a pane.
Label {
    width: parent.width
    bottomPadding: Math.round(Theme.body * 0.6)
    font.pixelSize: Theme.title
    font.weight: Font.DemiBold
    Accessible.role: Accessible.Heading
}
