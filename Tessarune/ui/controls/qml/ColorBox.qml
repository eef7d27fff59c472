import QtQuick
import QtQuick.Templates as T
import Tessarune

// A choice of a colour: one of the presets, or one typed as #RRGGBB or RRGGBB.
T.Button {
    id: root

    property string name: ""
    // As #RRGGBB.
    property string value: "#000000"
    // The label of the text field, for a screen reader.
    property string hint: ""
    signal chosen(string value)

    implicitWidth: Math.round(Theme.body * 8)
    implicitHeight: Theme.controlHeight
    opacity: enabled ? 1 : 0.5
    Accessible.role: Accessible.Button
    Accessible.name: name
    Accessible.description: value
    Accessible.onPressAction: if (enabled) clicked()
    Keys.forwardTo: PressKeys { onPressed: root.clicked() }
    onClicked: popup.open()

    contentItem: Item {
        Rectangle {
            id: swatch
            x: Math.round(Theme.body * 0.5)
            anchors.verticalCenter: parent.verticalCenter
            width: Math.round(Theme.body * 1.5)
            height: Math.round(Theme.body * 1.2)
            radius: 4
            color: root.value
            border.color: Theme.edge
        }
        Text {
            anchors { left: swatch.right; leftMargin: Math.round(Theme.body * 0.6); verticalCenter: parent.verticalCenter }
            text: root.value
            textFormat: Text.PlainText
            color: Theme.text
            font.pixelSize: Theme.body
        }
    }

    background: Rectangle {
        radius: Theme.radius
        color: root.hovered || popup.visible ? Theme.hovered : Theme.raised
        border.color: root.visualFocus ? Theme.accent : Theme.line
        border.width: root.visualFocus ? 2 : 1
    }

    T.Popup {
        id: popup

        x: root.width - width
        y: root.height + 4
        // A popup without a style has no size of its own.
        width: presets.implicitWidth + leftPadding + rightPadding
        height: contentItem.implicitHeight + topPadding + bottomPadding
        margins: 8
        padding: Math.round(Theme.body * 0.8)
        focus: true
        // A binding would not replace a text that was not accepted, because the value is unchanged.
        onAboutToShow: field.text = root.value
        onOpened: field.forceActiveFocus()

        background: Rectangle {
            radius: Theme.radius + 2
            color: Theme.raised
            border.color: Theme.line
        }

        contentItem: Column {
            spacing: Math.round(Theme.body * 0.7)

            Grid {
                id: presets

                columns: 6
                spacing: Math.round(Theme.body * 0.45)

                Repeater {
                    model: ["#F2F2F4", "#C8C8CE", "#8A8A90", "#3A3A40", "#1B1B1E", "#000000",
                            "#FFE27A", "#FFB35C", "#FF8A80", "#7DB8FF", "#21BB54", "#8FE3B0"]

                    T.Button {
                        id: preset

                        required property string modelData

                        implicitWidth: Math.round(Theme.body * 1.9)
                        implicitHeight: implicitWidth
                        Accessible.role: Accessible.Button
                        Accessible.name: modelData
                        Accessible.onPressAction: if (enabled) clicked()
                        Keys.forwardTo: PressKeys { onPressed: preset.clicked() }
                        onClicked: {
                            root.chosen(modelData);
                            popup.close();
                        }

                        background: Rectangle {
                            radius: 6
                            color: preset.modelData
                            border.color: preset.visualFocus || preset.modelData === root.value ? Theme.accent : Theme.edge
                            border.width: preset.visualFocus || preset.modelData === root.value ? 3 : 1
                        }
                    }
                }
            }

            EntryField {
                id: field

                width: parent.width
                name: root.hint
                maximumLength: 7
                color: acceptableInput ? Theme.text : Theme.trouble
                validator: RegularExpressionValidator { regularExpression: /#?[0-9A-Fa-f]{6}/ }
                onAccepted: {
                    root.chosen("#" + text.replace("#", "").toUpperCase());
                    popup.close();
                }
            }
        }
    }
}
