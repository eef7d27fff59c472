import QtQuick
import Tessarune
import "qrc:/controls"

// One setting: its name, its description, and the control that changes it.
Item {
    id: root

    required property SettingsWindowModel model
    required property SettingRowsModel rows
    required property bool isFirst
    required property int index
    required property string title
    required property string about
    required property string section
    required property string control
    required property var value
    required property string valueText
    required property var choices
    required property int current
    required property real from
    required property real to
    required property real step
    required property bool changed
    required property bool available
    required property string problem
    required property string pane

    readonly property var controls: ({ toggle: toggleControl, choice: choiceControl, number: numberControl, color: colorControl, text: textControl, elsewhere: linkControl })

    height: heading.height + Math.max(texts.height, box.height) + Math.round(Theme.body * 1.3)

    SectionTitle {
        id: heading
        width: parent.width
        text: root.section
        isFirst: root.isFirst
    }

    Rectangle {
        visible: root.section === ""
        y: 0
        width: parent.width
        height: 1
        color: Theme.line
    }

    Column {
        id: texts

        anchors { left: parent.left; right: restore.left; rightMargin: Theme.gap; top: heading.bottom; topMargin: Math.round((parent.height - heading.height - height) / 2) }
        spacing: 2
        opacity: root.available ? 1 : 0.5

        Label {
            width: parent.width
            text: root.title
        }
        Label {
            width: parent.width
            visible: text !== ""
            text: root.about
            color: Theme.quiet
            font.pixelSize: Theme.small
        }
        Label {
            width: parent.width
            visible: text !== ""
            text: root.problem
            color: Theme.trouble
            font.pixelSize: Theme.small
            Accessible.role: Accessible.AlertMessage
        }
    }

    GlyphButton {
        id: restore

        objectName: "restore"
        anchors { right: box.left; rightMargin: 4; verticalCenter: box.verticalCenter }
        opacity: root.changed && root.control !== "elsewhere" ? 1 : 0
        enabled: opacity > 0
        glyph: "restore"
        text: root.model.texts.restore
        name: root.model.texts.restore + ": " + root.title
        onClicked: root.rows.restore(root.index)
    }

    Loader {
        id: box

        anchors { right: parent.right; top: heading.bottom; topMargin: Math.round((parent.height - heading.height - height) / 2) }
        enabled: root.available
        sourceComponent: root.controls[root.control]
    }

    Component {
        id: toggleControl

        Toggle {
            objectName: "control"
            text: root.title
            checked: root.value
            onToggled: root.rows.toggle(root.index, checked)
            Accessible.description: root.about
        }
    }

    Component {
        id: choiceControl

        ChoiceBox {
            objectName: "control"
            name: root.title
            model: root.choices
            currentIndex: root.current
            otherText: root.valueText
            onActivated: index => root.rows.choose(root.index, index)
            Accessible.description: root.about
        }
    }

    Component {
        id: numberControl

        Row {
            spacing: Theme.gap

            Label {
                anchors.verticalCenter: parent.verticalCenter
                horizontalAlignment: Text.AlignRight
                wrapMode: Text.NoWrap
                color: Theme.quiet
                text: slider.pressed ? root.rows.numberText(root.index, slider.value) : root.valueText
            }
            ValueSlider {
                id: slider
                objectName: "control"
                name: root.title
                from: root.from
                to: root.to
                stepSize: root.step
                value: root.value
                onMoved: root.rows.slide(root.index, value)
                Accessible.description: root.valueText + ". " + root.about
            }
        }
    }

    Component {
        id: colorControl

        ColorBox {
            objectName: "control"
            name: root.title
            value: root.value
            hint: root.model.texts.color
            onChosen: value => root.rows.write(root.index, value)
        }
    }

    Component {
        id: textControl

        EntryField {
            id: field

            objectName: "control"
            name: root.title
            text: root.value
            onEditingFinished: if (text !== root.value || root.problem !== "") root.rows.write(root.index, text)
            Accessible.description: root.about

            // A refused text goes with its message, also if the value stays the same.
            Connections {
                target: root
                function onProblemChanged() {
                    if (root.problem === "") field.text = Qt.binding(() => root.value);
                }
            }
        }
    }

    Component {
        id: linkControl

        PushButton {
            objectName: "control"
            text: root.model.texts.open
            onClicked: root.model.pane = root.pane
            Accessible.description: root.title
        }
    }
}
