import QtQuick
import Tessarune
import "qrc:/controls"

// A framed group of items.
Rectangle {
    default property alias content: column.data

    height: column.height + 2 * column.y
    radius: Theme.radius + 2
    color: Theme.panel
    border.color: Theme.line

    Column {
        id: column

        x: Math.round(Theme.body * 1.1)
        y: Math.round(Theme.body)
        width: parent.width - 2 * x
        spacing: 4
    }
}
