import QtQuick
import Tessarune

// The sound level as bars.
Row {
    id: root

    required property real level
    required property bool isListening

    readonly property real unit: Theme.body / 12

    spacing: 2 * unit
    height: 14 * unit

    Repeater {
        model: [0.55, 1, 0.75]

        Rectangle {
            required property real modelData

            anchors.bottom: parent.bottom
            width: 3 * root.unit
            height: (3 + 11 * Math.max(0, Math.min(1, root.level * 1.6)) * modelData) * root.unit
            radius: width / 2
            color: root.isListening ? "#4fd07f" : "#77777c"

            Behavior on height {
                enabled: !Theme.reducesMotion
                NumberAnimation { duration: 90 }
            }
        }
    }
}
