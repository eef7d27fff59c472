import QtQuick
import Tessarune
import "qrc:/controls"

// A column of settings.
Column {
    id: root

    required property SettingsWindowModel model
    required property SettingRowsModel rows
    // Whether nothing but the pane's title is above the column.
    property bool isFirst: true

    Repeater {
        model: root.rows

        SettingRow {
            width: root.width
            model: root.model
            rows: root.rows
            isFirst: root.isFirst && index === 0
        }
    }
}
