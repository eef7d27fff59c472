import QtQuick
import QtQuick.Window
import Tessarune

// The controls of the window, over the captions: toolbar, menu, resizable edges and shortcuts.
Item {
    id: root

    required property CaptionWindowModel model
    required property CaptionToolbarModel toolbar
    required property CaptionCommandsModel commands
    required property CaptionHearingModel hearing
    required property CaptionStage stage
    required property real radius
    readonly property bool menuOpen: bar.menuOpen || menu.isOpen
    // 0 while the toolbar is hidden.
    readonly property real toolbarHeight: bar.opacity > 0 ? bar.height : 0

    function openMenu(item: Item, x: real, y: real) {
        toolbar.refreshSources();
        menu.openAt(item, x, y);
    }

    CaptionToolbar {
        id: bar
        objectName: "toolbar"

        // Whether any button of the window has the keyboard focus.
        readonly property bool isFocused: Window.active && (Window.activeFocusItem?.activeFocusOnTab ?? false)

        anchors { left: parent.left; right: parent.right; top: parent.top }
        toolbar: root.toolbar
        commands: root.commands
        hearing: root.hearing
        radius: root.radius
        shown: root.model.showsChrome
        isRead: root.model.isRead
        onIsFocusedChanged: root.model.setToolbarFocused(isFocused)
        onCloseRequested: root.model.close()
        onMenuRequested: (item, x, y) => root.openMenu(item, x, y)
    }

    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.RightButton
        onClicked: mouse => root.openMenu(root, mouse.x, mouse.y)
    }

    ResizeEdges {
        anchors.fill: parent
    }

    CaptionMenu {
        id: menu
        objectName: "contextMenu"
        commands: root.commands
    }

    Repeater {
        model: root.commands

        Item {
            id: command

            required property int index
            required property string keys
            required property bool available

            Shortcut {
                sequence: command.keys
                enabled: command.available
                autoRepeat: false
                onActivated: root.commands.press(command.index)
            }
        }
    }
    Binding {
        target: root.commands
        property: "selection"
        value: root.stage.selectedText
    }
    Shortcut {
        sequences: WindowKeys.selectAll
        onActivated: root.stage.selectAll()
    }
    Shortcut {
        sequences: [StandardKey.Cancel]
        enabled: root.stage.selectedText !== "" && !root.menuOpen
        onActivated: root.stage.clearSelection()
    }
    Shortcut {
        sequences: WindowKeys.menu
        enabled: !root.menuOpen
        onActivated: root.openMenu(root, 12, 12)
    }
}
