import QtQuick
import Tessarune
import "qrc:/controls"

// The profiles, the advanced settings, and the diagnostics runs in the data folder.
ScrollArea {
    id: root

    required property SettingsWindowModel model
    required property ProfilesModel profiles
    required property DiagnosticsRunsModel runs

    PaneTitle {
        text: root.model.paneTitle
    }
    SectionTitle {
        width: parent.width
        text: root.profiles.texts.profiles
        isFirst: true
    }

    Repeater {
        model: root.profiles.profiles

        Item {
            id: row

            required property int index
            required property var modelData

            width: parent ? parent.width : 0
            height: Math.max(texts.height, button.height) + Math.round(Theme.body * 1.1)

            Rectangle {
                visible: row.index > 0
                width: parent.width
                height: 1
                color: Theme.line
            }

            Column {
                id: texts
                anchors { left: parent.left; right: button.left; rightMargin: Theme.gap; verticalCenter: parent.verticalCenter }
                spacing: 2

                Label {
                    width: parent.width
                    text: row.modelData.title
                }
                Label {
                    width: parent.width
                    text: row.modelData.about
                    color: Theme.quiet
                    font.pixelSize: Theme.small
                }
            }

            PushButton {
                id: button
                objectName: "control"
                property string name: row.modelData.title
                anchors { right: parent.right; verticalCenter: parent.verticalCenter }
                text: root.profiles.texts.apply
                enabled: !root.profiles.isLocked
                Accessible.name: text + ": " + name
                onClicked: root.profiles.apply(row.index)
            }
        }
    }

    Flow {
        width: parent.width
        topPadding: Math.round(Theme.body * 0.5)
        spacing: Theme.gap

        PushButton {
            objectName: "control"
            text: root.profiles.texts.snapshot
            onClicked: root.profiles.copySnapshot()
        }
        PushButton {
            objectName: "control"
            text: root.profiles.texts.restore
            enabled: !root.profiles.isLocked
            onClicked: root.profiles.restore()
        }
    }
    Label {
        width: parent.width
        topPadding: Math.round(Theme.body * 0.6)
        visible: text !== ""
        text: root.profiles.message
        color: root.profiles.isLocked ? Theme.trouble : Theme.good
        Accessible.role: Accessible.AlertMessage
    }

    SettingRows {
        width: parent.width
        model: root.model
        rows: root.model.rows
        isFirst: false
    }

    DiagnosticsRuns {
        width: parent.width
        runs: root.runs
    }
}
