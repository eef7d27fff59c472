import QtQuick

// The sources to choose from.
Rectangle {
    id: root

    required property var names
    required property int current
    signal chosen(int index)
    signal dismissed

    implicitWidth: 320
    implicitHeight: list.contentHeight + 12
    width: implicitWidth
    radius: 12
    color: "#fa2a2a2e"
    border.color: "#2effffff"
    border.width: 1
    onVisibleChanged: if (visible) list.forceActiveFocus()
    Keys.onEscapePressed: dismissed()

    ListView {
        id: list

        anchors { fill: parent; margins: 6 }
        clip: true
        model: root.names
        currentIndex: root.current
        boundsBehavior: Flickable.StopAtBounds
        keyNavigationEnabled: true
        Keys.onReturnPressed: root.chosen(currentIndex)

        delegate: Rectangle {
            id: entry

            required property int index
            required property string modelData

            width: ListView.view.width
            height: 32
            radius: 8
            color: area.containsMouse || ListView.isCurrentItem && list.activeFocus ? "#29ffffff" : "transparent"
            Accessible.role: Accessible.MenuItem
            Accessible.name: modelData
            Accessible.onPressAction: root.chosen(index)

            Icon {
                x: 10
                anchors.verticalCenter: parent.verticalCenter
                visible: entry.index === root.current
                name: "check"
                width: 12
                height: 12
            }

            Text {
                anchors { fill: parent; leftMargin: 32; rightMargin: 10 }
                verticalAlignment: Text.AlignVCenter
                elide: Text.ElideRight
                text: entry.modelData
                textFormat: Text.PlainText
                color: "#f2f2f4"
                font.pixelSize: 14
            }

            MouseArea {
                id: area
                anchors.fill: parent
                hoverEnabled: true
                onClicked: root.chosen(entry.index)
            }
        }
    }
}
