import QtQuick
import Tessarune

// The sound level as bars.
Row {
    id: root

    required property real level
    required property bool isListening

    spacing: 2
    height: 14

    Repeater {
        model: [0.55, 1, 0.75]

        Rectangle {
            required property real modelData

            anchors.bottom: parent.bottom
            width: 3
            height: 3 + 11 * Math.max(0, Math.min(1, root.level * 1.6)) * modelData
            radius: 1.5
            color: root.isListening ? "#4fd07f" : "#77777c"

            Behavior on height {
                enabled: !Theme.reducesMotion
                NumberAnimation { duration: 90 }
            }
        }
    }
}
