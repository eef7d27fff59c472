import QtQuick
import QtQuick.Templates as T
import Tessarune
import "qrc:/controls"

// A bar for each period, the latest on the right. The arrow keys move from bar to bar.
FocusScope {
    id: root

    required property UsageModel usage
    required property string name

    readonly property real labelHeight: Math.round(Theme.body * 3.4)
    readonly property real axisWidth: Math.round(Theme.body * 4.6)
    readonly property real barWidth: Math.round(Theme.body * 2.4)

    // The period and the figures of the chosen bar.
    Label {
        id: caption

        x: root.axisWidth
        width: parent.width - x
        text: bars.currentItem ? bars.currentItem.name + "   " + bars.currentItem.figures : ""
        wrapMode: Text.NoWrap
        elide: Text.ElideRight
    }

    Item {
        id: area

        anchors { left: parent.left; right: parent.right; top: caption.bottom; topMargin: Math.round(Theme.body * 1.1); bottom: parent.bottom; bottomMargin: root.labelHeight }

        Repeater {
            model: [0, 0.5, 1]

            Rectangle {
                required property real modelData

                x: root.axisWidth
                y: Math.round((area.height - 1) * (1 - modelData))
                width: area.width - x
                height: 1
                color: Theme.line
            }
        }
        Label {
            y: -height / 2
            width: root.axisWidth - Math.round(Theme.body * 0.6)
            horizontalAlignment: Text.AlignRight
            text: root.usage.scale
            color: Theme.quiet
            font.pixelSize: Theme.small
        }
        Label {
            anchors { bottom: parent.bottom; bottomMargin: -height / 2 }
            width: root.axisWidth - Math.round(Theme.body * 0.6)
            horizontalAlignment: Text.AlignRight
            text: "0"
            color: Theme.quiet
            font.pixelSize: Theme.small
        }
    }

    ListView {
        id: bars

        objectName: "bars"
        // The view is as wide as a whole number of bars, so that no bar is cut off.
        anchors { left: parent.left; leftMargin: root.axisWidth + (root.width - root.axisWidth) % root.barWidth; right: parent.right; top: area.top; bottom: parent.bottom }
        clip: true
        focus: true
        activeFocusOnTab: true
        orientation: ListView.Horizontal
        boundsBehavior: Flickable.StopAtBounds
        reuseItems: true
        highlightMoveDuration: 0
        model: root.usage
        Accessible.role: Accessible.Chart
        Accessible.name: root.name
        onCountChanged: Qt.callLater(toLatest) // the view has to know the new rows first
        Component.onCompleted: toLatest()
        Keys.onPressed: event => {
            const page = Math.max(1, Math.floor(width / root.barWidth) - 1);
            const targets = {
                [Qt.Key_Home]: 0,
                [Qt.Key_End]: count - 1,
                [Qt.Key_PageUp]: Math.max(0, currentIndex - page),
                [Qt.Key_PageDown]: Math.min(count - 1, currentIndex + page)
            };
            if (!(event.key in targets) || count === 0)
                return;
            currentIndex = targets[event.key];
            event.accepted = true;
        }

        function toLatest() {
            // A view without bars would create each bar up to the wanted one, too.
            forceLayout();
            const latest = Math.min(root.usage.latest, count - 1);
            positionViewAtIndex(latest, ListView.End);
            currentIndex = latest;
        }

        T.ScrollBar.horizontal: ListBar {
            anchors.bottom: parent.bottom
        }

        delegate: Item {
            id: bar

            required property int index
            required property real fraction
            required property string label
            required property string group
            required property string name
            required property string figures
            readonly property bool isCurrent: ListView.isCurrentItem

            width: root.barWidth
            height: bars.height
            Accessible.role: Accessible.ListItem
            Accessible.name: name + ", " + figures
            Accessible.selected: isCurrent
            Accessible.onPressAction: bars.currentIndex = index

            Rectangle {
                anchors { horizontalCenter: parent.horizontalCenter; bottom: parent.bottom; bottomMargin: root.labelHeight }
                width: Math.round(Theme.body * 1.5)
                height: Math.max(bar.fraction > 0 ? 2 : 0, Math.round(area.height * bar.fraction))
                radius: Math.min(4, height / 2)
                color: Theme.accent
                opacity: bar.isCurrent || pointer.containsMouse ? 1 : 0.6
            }
            Rectangle {
                anchors { horizontalCenter: parent.horizontalCenter; bottom: day.bottom; bottomMargin: -2 }
                visible: bar.isCurrent
                width: parent.width - 4
                height: day.height + 4
                radius: 4
                color: Theme.chosen
                border.color: bars.activeFocus ? Theme.accent : "transparent"
                border.width: 2
            }
            Label {
                id: day

                anchors { horizontalCenter: parent.horizontalCenter; top: parent.bottom; topMargin: Math.round(Theme.body * 0.4) - root.labelHeight }
                text: bar.label
                wrapMode: Text.NoWrap
                color: bar.isCurrent ? Theme.text : Theme.quiet
                font.pixelSize: Theme.small
                Accessible.ignored: true
            }
            Label {
                anchors { left: day.left; top: day.bottom }
                text: bar.group
                wrapMode: Text.NoWrap
                color: Theme.quiet
                font.pixelSize: Theme.small
                Accessible.ignored: true
            }
            MouseArea {
                id: pointer

                anchors.fill: parent
                hoverEnabled: true
                onClicked: {
                    bars.forceActiveFocus();
                    bars.currentIndex = bar.index;
                }
            }
        }
    }
}
