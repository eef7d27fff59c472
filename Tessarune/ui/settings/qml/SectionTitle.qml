import QtQuick
import Tessarune
import "qrc:/controls"

// The heading of a group; hidden without a text.
Item {
    id: root

    property alias text: label.text
    property bool isFirst: false

    visible: text !== ""
    height: visible ? label.height + Math.round(Theme.body * (isFirst ? 0.6 : 1.8)) : 0

    Label {
        id: label
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom; bottomMargin: Math.round(Theme.body * 0.2) }
        color: Theme.accent
        font.pixelSize: Theme.small
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
    }
}
