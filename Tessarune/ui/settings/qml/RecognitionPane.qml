import QtQuick
import Tessarune
import "qrc:/controls"

// The speech models, and the other settings of the recogniser.
ScrollArea {
    id: root

    required property SettingsWindowModel model
    required property ResourcesModel models

    Component.onCompleted: models.refresh()

    PaneTitle {
        text: root.model.paneTitle
    }
    SectionTitle {
        width: parent.width
        text: root.model.texts.models
        isFirst: true
    }
    ResourceRows {
        width: parent.width
        resources: root.models
    }
    SettingRows {
        width: parent.width
        model: root.model
        rows: root.model.rows
        isFirst: false
    }
}
