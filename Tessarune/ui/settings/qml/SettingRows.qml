import QtQuick
import Tessarune
import "qrc:/controls"

// Settings one below the other.
Column {
    id: root

    required property SettingsWindowModel model
    required property SettingRowsModel rows
    // Nothing stands above them.
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
