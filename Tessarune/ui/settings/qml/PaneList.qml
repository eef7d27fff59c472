import QtQuick
import Tessarune
import "qrc:/controls"

// The list of the panes, for choosing one.
FocusScope {
    id: root

    required property SettingsWindowModel model

    ListView {
        id: list

        objectName: "panes"
        anchors { fill: parent; leftMargin: Math.round(Theme.body * 0.7); rightMargin: Math.round(Theme.body * 0.7) }
        focus: true
        activeFocusOnTab: true
        boundsBehavior: Flickable.StopAtBounds
        spacing: 2
        model: root.model.panes
        keyNavigationEnabled: true
        currentIndex: root.model.panes.findIndex(pane => pane.name === root.model.pane)
        onCurrentIndexChanged: if (activeFocus) root.model.pane = root.model.panes[currentIndex].name
        Accessible.role: Accessible.List
        Accessible.name: root.model.texts.panes

        delegate: Rectangle {
            id: entry

            required property var modelData
            readonly property bool isCurrent: modelData.name === root.model.pane && !root.model.isSearching

            width: ListView.view.width
            height: Math.round(Theme.body * 2.5)
            radius: Theme.radius
            color: isCurrent ? Theme.chosen : area.containsMouse ? Theme.hovered : "transparent"
            border.color: isCurrent && list.activeFocus ? Theme.accent : "transparent"
            border.width: 2
            Accessible.role: Accessible.ListItem
            Accessible.name: modelData.title
            Accessible.selected: isCurrent
            Accessible.onPressAction: root.model.pane = modelData.name

            Glyph {
                id: glyph
                x: Math.round(Theme.body * 0.8)
                anchors.verticalCenter: parent.verticalCenter
                name: entry.modelData.name
                color: entry.isCurrent ? Theme.accent : Theme.quiet
            }

            Label {
                anchors { left: glyph.right; leftMargin: Math.round(Theme.body * 0.8); right: parent.right; verticalCenter: parent.verticalCenter }
                text: entry.modelData.title
                wrapMode: Text.NoWrap
                elide: Text.ElideRight
                font.weight: entry.isCurrent ? Font.Medium : Font.Normal
                Accessible.ignored: true
            }

            MouseArea {
                id: area
                anchors.fill: parent
                hoverEnabled: true
                onClicked: {
                    root.model.pane = entry.modelData.name;
                    list.forceActiveFocus();
                }
            }
        }
    }
}
