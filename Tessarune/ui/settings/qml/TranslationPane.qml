import QtQuick
import Tessarune
import "qrc:/controls"

// The status and a test of the translation, its settings, and the target languages.
ScrollArea {
    id: root

    required property SettingsWindowModel model
    required property ResourcesModel languages
    required property TranslationTestModel test

    Component.onCompleted: languages.refresh()

    PaneTitle {
        text: root.model.paneTitle
    }

    Panel {
        width: parent.width

        Label {
            width: parent.width
            text: root.test.state
            font.weight: Font.DemiBold
        }
        Label {
            width: parent.width
            text: root.test.stateDetail
            color: Theme.quiet
            font.pixelSize: Theme.small
        }
        Row {
            width: parent.width
            topPadding: Math.round(Theme.body * 0.5)
            spacing: Theme.gap

            PushButton {
                id: run
                objectName: "control"
                text: root.test.texts.run
                enabled: root.test.canRun
                onClicked: root.test.run()
            }
            Column {
                width: parent.width - run.width - parent.spacing
                anchors.verticalCenter: parent.verticalCenter
                spacing: 2

                Label {
                    width: parent.width
                    visible: text !== ""
                    text: root.test.result
                }
                Label {
                    width: parent.width
                    visible: text !== ""
                    text: root.test.status
                    color: Theme.quiet
                    font.pixelSize: Theme.small
                    Accessible.role: Accessible.AlertMessage
                }
            }
        }
    }

    SettingRows {
        width: parent.width
        model: root.model
        rows: root.model.rows
        isFirst: false
    }
    SectionTitle {
        width: parent.width
        text: root.model.texts.languages
    }
    ResourceRows {
        width: parent.width
        resources: root.languages
    }
}
