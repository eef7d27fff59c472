import QtQuick
import Tessarune

// A short message, an action, or both.
Rectangle {
    id: root

    property string text: ""
    required property real maximumWidth
    property real maximumHeight: Infinity
    property bool isBusy: false
    property bool isTrouble: false
    property int mostLines: isTrouble ? 12 : 4
    property string action: ""
    signal activated

    implicitWidth: Math.min(content.implicitWidth + 28, maximumWidth)
    implicitHeight: Math.max(Math.round(Theme.body * 2.6), content.implicitHeight + 14)
    radius: Math.min(16, height / 2)
    color: isTrouble ? "#f04a2020" : "#f02c2c30"
    border.color: "#2effffff"
    border.width: 1
    Accessible.role: isTrouble ? Accessible.AlertMessage : Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: text === ""

    // Measures the width of the unwrapped text.
    Text {
        id: natural
        readonly property real oneLine: implicitHeight / lineCount
        visible: false
        text: root.text
        textFormat: Text.PlainText
        font.pixelSize: Math.round(Theme.body * 1.08)
    }

    Row {
        id: content

        anchors.centerIn: parent
        spacing: Math.round(Theme.body * 0.75)

        Rectangle {
            id: dot
            anchors.verticalCenter: parent.verticalCenter
            visible: root.isBusy || root.isTrouble
            width: Math.round(Theme.body * 0.65)
            height: width
            radius: width / 2
            color: root.isTrouble ? "#ff8a75" : "#f2c14e"

            SequentialAnimation on opacity {
                running: root.isBusy && root.visible && !Theme.reducesMotion
                loops: Animation.Infinite
                alwaysRunToEnd: true
                NumberAnimation { to: 0.3; duration: 500; easing.type: Easing.InOutQuad }
                NumberAnimation { to: 1; duration: 500; easing.type: Easing.InOutQuad }
            }
        }

        Text {
            objectName: "text"
            anchors.verticalCenter: parent.verticalCenter
            visible: text !== ""
            width: Math.min(Math.ceil(natural.implicitWidth), root.maximumWidth - 28 - dot.width - 2 * content.spacing - (link.visible ? link.width : 0))
            wrapMode: Text.Wrap
            maximumLineCount: Math.max(1, Math.min(root.mostLines, Math.floor((root.maximumHeight - 14) / natural.oneLine)))
            elide: Text.ElideRight
            text: root.text
            textFormat: Text.PlainText
            color: "#f2f2f4"
            font.pixelSize: Math.round(Theme.body * 1.08)
        }

        Text {
            id: link

            anchors.verticalCenter: parent.verticalCenter
            visible: root.action !== ""
            text: root.action
            textFormat: Text.PlainText
            color: area.containsMouse ? "#a9d2ff" : "#7db8ff"
            font.pixelSize: Math.round(Theme.body * 1.08)
            font.weight: Font.Medium
            font.underline: activeFocus
            activeFocusOnTab: visible
            Accessible.role: Accessible.Button
            Accessible.name: root.action
            Accessible.ignored: root.action === ""
            Accessible.onPressAction: root.activated()
            Keys.onReturnPressed: event => press(event)
            Keys.onEnterPressed: event => press(event)
            Keys.onSpacePressed: event => press(event)
            // While the button has the focus, Space presses it and is not the window's shortcut.
            Keys.onShortcutOverride: event => event.accepted = event.key === Qt.Key_Space

            // A held key presses once.
            function press(event: KeyEvent) {
                if (!event.isAutoRepeat)
                    root.activated();
            }

            MouseArea {
                id: area
                anchors.fill: parent
                anchors.margins: -6
                hoverEnabled: true
                cursorShape: Qt.PointingHandCursor
                onClicked: root.activated()
            }
        }
    }
}
