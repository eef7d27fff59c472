import QtQuick
import QtQuick.Templates as T
import Tessarune

// A choice of one text from a list.
T.ComboBox {
    id: root

    // The label of the choice, for a screen reader.
    property string name: ""
    // Shown while no entry of the list is chosen.
    property string otherText: ""
    // The width in which each choice is shown in full.
    readonly property real fittingWidth: widest + leftPadding + rightPadding
    readonly property real widest: {
        let width = 0;
        metrics.font; // advanceWidth() does not depend on it by itself
        for (let i = 0; i < count; ++i)
            width = Math.max(width, metrics.advanceWidth(textAt(i)));
        return Math.ceil(width) + 1;
    }

    implicitWidth: Math.round(Theme.body * 19)
    implicitHeight: Theme.controlHeight
    leftPadding: Math.round(Theme.body * 0.8)
    rightPadding: Math.round(Theme.body * 2.2)
    opacity: enabled ? 1 : 0.5
    Accessible.role: Accessible.ComboBox
    Accessible.name: name
    Accessible.onPressAction: if (enabled) popup.open()
    Keys.forwardTo: PressKeys { onPressed: root.popup.open() }

    contentItem: Text {
        text: root.currentIndex < 0 ? root.otherText : root.displayText
        textFormat: Text.PlainText
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
        color: Theme.text
        font.pixelSize: Theme.body
    }

    indicator: Glyph {
        x: root.width - width - Math.round(Theme.body * 0.7)
        y: (root.height - height) / 2
        name: "down"
    }

    background: Rectangle {
        radius: Theme.radius
        color: root.hovered || root.popup.visible ? Theme.hovered : Theme.raised
        border.color: root.visualFocus ? Theme.accent : Theme.line
        border.width: root.visualFocus ? 2 : 1
    }

    delegate: T.ItemDelegate {
        id: entry

        required property int index
        required property string modelData

        width: ListView.view.width
        height: Theme.controlHeight
        highlighted: root.highlightedIndex === index
        Accessible.role: Accessible.ListItem
        Accessible.name: modelData
        Accessible.onPressAction: clicked()

        contentItem: Item {
            Glyph {
                x: Math.round(Theme.body * 0.7)
                anchors.verticalCenter: parent.verticalCenter
                visible: root.currentIndex === entry.index
                name: "check"
                color: Theme.accent
            }
            Text {
                anchors { left: parent.left; leftMargin: Math.round(Theme.body * 2.3); right: parent.right; rightMargin: Math.round(Theme.body * 0.8); verticalCenter: parent.verticalCenter }
                text: entry.modelData
                textFormat: Text.PlainText
                elide: Text.ElideRight
                color: Theme.text
                font.pixelSize: Theme.body
            }
        }

        background: Rectangle {
            radius: Theme.radius - 2
            color: entry.highlighted ? Theme.chosen : "transparent"
        }
    }

    FontMetrics {
        id: metrics
        font.pixelSize: Theme.body
    }

    popup: T.Popup {
        y: root.height + 4
        // Room for the widest text, with the check mark before it.
        width: Math.max(root.width, Math.ceil(root.widest + Theme.body * 3.1) + 2 * padding)
        height: Math.min(contentItem.implicitHeight + 8, Theme.controlHeight * 9)
        margins: 8
        padding: 4

        contentItem: ListView {
            clip: true
            implicitHeight: contentHeight
            model: root.delegateModel
            currentIndex: root.highlightedIndex
            boundsBehavior: Flickable.StopAtBounds
            highlightMoveDuration: 0
        }

        background: Rectangle {
            radius: Theme.radius + 2
            color: Theme.raised
            border.color: Theme.line
        }
    }
}
