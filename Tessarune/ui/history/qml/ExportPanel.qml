import QtQuick
import QtQuick.Templates as T
import Tessarune
import "qrc:/controls"

// The choice of the format and the content of an export.
Popover {
    id: root

    required property HistoryExportModel model
    required property var texts

    objectName: "exportPanel"
    width: Math.round(Theme.body * 28)
    onOpened: formats.forceActiveFocus(Qt.TabFocusReason)

    // The panel closed when the user was asked for a file. It opens again for a long export, to show
    // its progress and the button that cancels it, and closes at the end of the export unless the
    // user has closed and opened it meanwhile.
    readonly property bool isExportLong: model.canCancel
    property bool isOpenForProgress: false
    onIsExportLongChanged: {
        if (isExportLong && !visible) {
            open();
            isOpenForProgress = true;
        } else if (!isExportLong && isOpenForProgress) {
            close();
        }
    }
    onClosed: isOpenForProgress = false

    contentItem: Column {
        spacing: Math.round(Theme.body * 0.9)

        Grid {
            id: formats

            function forceActiveFocus(reason) {
                for (let i = 0; i < buttons.count; ++i) {
                    if (buttons.itemAt(i).checked)
                        buttons.itemAt(i).forceActiveFocus(reason);
                }
            }

            columns: 3
            spacing: Math.round(Theme.body * 0.5)

            Repeater {
                id: buttons

                model: root.model.formats

                T.AbstractButton {
                    id: format

                    required property var modelData

                    objectName: "format"
                    implicitWidth: (root.availableWidth - 2 * formats.spacing) / 3
                    implicitHeight: Math.round(Theme.body * 2.8)
                    focusPolicy: Qt.StrongFocus
                    checked: root.model.format === modelData.name
                    text: modelData.title
                    Accessible.role: Accessible.RadioButton
                    Accessible.name: text
                    Accessible.checked: checked
                    Accessible.onPressAction: if (enabled) clicked()
                    Accessible.onToggleAction: if (enabled) clicked()
                    Keys.forwardTo: PressKeys { onPressed: format.clicked() }
                    onClicked: root.model.format = modelData.name

                    contentItem: Text {
                        text: format.text
                        textFormat: Text.PlainText
                        horizontalAlignment: Text.AlignHCenter
                        verticalAlignment: Text.AlignVCenter
                        color: format.checked ? Theme.accent : Theme.text
                        font.pixelSize: Theme.body
                        font.weight: format.checked ? Font.Medium : Font.Normal
                    }

                    background: Rectangle {
                        radius: Theme.radius
                        color: format.checked ? Theme.chosen : format.hovered ? Theme.hovered : "transparent"
                        border.color: format.visualFocus ? Theme.accent : Theme.line
                        border.width: format.visualFocus ? 2 : 1
                    }
                }
            }
        }

        SegmentedChoice {
            visible: !root.model.isAudio
            enabled: root.model.canBeBilingual
            name: root.texts.language
            choices: root.model.canBeTranslation ? [root.texts.source, root.texts.bilingual, root.texts.translation] : [root.texts.source, root.texts.bilingual]
            current: root.model.content
            onChosen: index => root.model.content = index
        }

        Label {
            width: parent.width
            visible: text !== ""
            text: root.model.hint
            color: Theme.quiet
            font.pixelSize: Theme.small
        }

        Label {
            width: parent.width
            visible: root.model.canCancel
            text: root.model.audioText
            maximumLineCount: 2
            elide: Text.ElideRight
            font.pixelSize: Theme.small
        }

        ProgressLine {
            width: parent.width
            visible: root.model.canCancel || root.model.isBusy
            name: root.model.canCancel ? root.model.audioText : root.texts.exporting
            indeterminate: !root.model.canCancel || root.model.progress < 0
            value: Math.max(0, root.model.progress)
        }

        Row {
            anchors.right: parent.right
            spacing: Math.round(Theme.body * 0.6)

            PushButton {
                objectName: "cancelExport"
                visible: root.model.canCancel
                text: root.texts.cancel
                onClicked: root.model.cancel()
            }
            PushButton {
                objectName: "runExport"
                isPrimary: true
                enabled: !root.model.isBusy
                text: root.texts.exportTo
                onClicked: {
                    root.close();
                    root.model.run();
                }
            }
        }
    }
}
