import QtQuick
import QtQuick.Templates as T
import Tessarune

// A thin progress bar. While the progress is unknown, a short bar moves to and fro.
T.ProgressBar {
    id: root

    property string name: ""

    implicitHeight: 4
    Accessible.role: Accessible.ProgressBar
    Accessible.name: name

    contentItem: Item {
        clip: true

        Rectangle {
            id: done

            width: root.indeterminate ? parent.width * 0.3 : root.position * parent.width
            height: parent.height
            radius: 2
            color: Theme.accent

            SequentialAnimation on x {
                running: root.indeterminate && root.visible && !Theme.reducesMotion
                loops: Animation.Infinite
                onRunningChanged: if (!running) done.x = 0
                NumberAnimation { from: 0; to: root.width * 0.7; duration: 900; easing.type: Easing.InOutQuad }
                NumberAnimation { from: root.width * 0.7; to: 0; duration: 900; easing.type: Easing.InOutQuad }
            }
        }
    }

    background: Rectangle {
        radius: 2
        color: Theme.isDark ? "#4a4a50" : "#c9c9cf"
    }
}
