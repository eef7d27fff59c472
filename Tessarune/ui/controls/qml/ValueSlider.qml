import QtQuick
import QtQuick.Templates as T
import Tessarune

// A slider for a number.
T.Slider {
    id: root

    property string name: ""

    implicitWidth: Math.round(Theme.body * 11)
    implicitHeight: Theme.controlHeight
    padding: Math.round(Theme.body * 0.2)
    snapMode: T.Slider.SnapAlways
    opacity: enabled ? 1 : 0.4
    Accessible.role: Accessible.Slider
    Accessible.name: name
    Accessible.onIncreaseAction: step(true)
    Accessible.onDecreaseAction: step(false)

    function step(isUp) {
        if (!enabled)
            return;
        if (isUp)
            increase();
        else
            decrease();
        moved();
    }

    background: Rectangle {
        x: root.leftPadding
        y: (root.height - height) / 2
        width: root.availableWidth
        height: 4
        radius: 2
        color: Theme.isDark ? "#4a4a50" : "#c9c9cf"

        Rectangle {
            width: root.visualPosition * parent.width
            height: parent.height
            radius: 2
            color: Theme.accent
        }
    }

    handle: Rectangle {
        x: root.leftPadding + root.visualPosition * (root.availableWidth - width)
        y: (root.height - height) / 2
        width: Math.round(Theme.body * 1.2)
        height: width
        radius: width / 2
        color: Theme.isDark ? "#f2f2f4" : "#ffffff"
        border.color: root.visualFocus ? Theme.accent : Theme.edge
        border.width: root.visualFocus ? 3 : 1
    }
}
