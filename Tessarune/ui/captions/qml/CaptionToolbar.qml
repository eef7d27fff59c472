import QtQuick
import QtQuick.Window
import Tessarune

// Start and stop, the source, and the window's own buttons.
Item {
    id: root

    required property CaptionToolbarModel toolbar
    required property CaptionCommandsModel commands
    required property CaptionHearingModel hearing
    required property real radius
    required property bool shown
    required property real roomBelow
    readonly property bool menuOpen: sources.visible
    readonly property real size: Math.round(Theme.body * (toolbar.isCompact ? 2 : 2.6))
    signal closeRequested

    height: size + 18
    opacity: shown ? 1 : 0
    visible: opacity > 0

    Behavior on opacity {
        enabled: !Theme.reducesMotion
        NumberAnimation { duration: 160 }
    }

    // Covers the captions behind the buttons.
    Rectangle {
        anchors { fill: parent; margins: 1 }
        radius: root.radius - 1
        gradient: Gradient {
            GradientStop { position: 0; color: "#f21b1b1e" }
            GradientStop { position: 0.7; color: "#e61b1b1e" }
            GradientStop { position: 1; color: "#001b1b1e" }
        }
    }

    Row {
        anchors { left: parent.left; leftMargin: 12; verticalCenter: parent.verticalCenter; verticalCenterOffset: -2 }
        spacing: 10

        ToggleButton {
            id: toggle
            anchors.verticalCenter: parent.verticalCenter
            height: root.size
            showsText: !root.toolbar.isCompact
            isOn: root.toolbar.isListening
            isBusy: root.toolbar.isBusy
            text: root.toolbar.toggleText
            duration: root.toolbar.duration
            onActivated: root.toolbar.toggle()
        }

        SourceButton {
            id: sourceButton
            anchors.verticalCenter: parent.verticalCenter
            height: root.size
            source: root.toolbar.sourceName
            hint: root.toolbar.sourceText
            level: root.hearing.level
            isListening: root.toolbar.isListening
            canPress: root.toolbar.sources.length > 0
            maximumWidth: root.width - toggle.width - buttons.width - 44
            onActivated: {
                root.toolbar.refreshSources();
                sources.visible = !sources.visible;
            }
        }
    }

    Row {
        id: buttons

        anchors { right: parent.right; rightMargin: 10; verticalCenter: parent.verticalCenter; verticalCenterOffset: -2 }
        spacing: 2

        ToolButton {
            height: root.size
            visible: root.toolbar.showsSwap
            icon: "swap"
            text: root.toolbar.swapText
            onActivated: root.toolbar.swapOrder()
        }
        ToolButton {
            height: root.size
            visible: root.toolbar.showsLayout
            icon: "layout"
            text: root.toolbar.layoutText
            onActivated: root.toolbar.cycleLayout()
        }
        ToolButton {
            height: root.size
            visible: root.toolbar.showsCopy
            icon: "copy"
            text: root.toolbar.copyText
            onActivated: root.commands.copy(true)
        }
        ToolButton {
            height: root.size
            visible: root.toolbar.showsCopyOriginal
            icon: "copyOriginal"
            text: root.toolbar.copyOriginalText
            onActivated: root.commands.copy(false)
        }
        ToolButton {
            height: root.size
            visible: root.toolbar.showsClear
            icon: "clear"
            text: root.toolbar.clearText
            onActivated: root.commands.clear()
        }
        ToolButton {
            height: root.size
            visible: root.toolbar.showsPin
            icon: "pin"
            isOn: root.toolbar.keepsOnTop
            text: root.toolbar.pinText
            onActivated: root.toolbar.togglePin()
        }
        ToolButton {
            height: root.size
            visible: root.toolbar.showsHistory
            icon: "history"
            text: root.toolbar.historyText
            onActivated: root.toolbar.showHistory()
        }
        ToolButton {
            height: root.size
            visible: root.toolbar.showsSettings
            icon: "settings"
            text: root.toolbar.settingsText
            onActivated: root.toolbar.showSettings()
        }
        ToolButton {
            height: root.size
            icon: "close"
            text: root.toolbar.closeText
            onActivated: root.closeRequested()
        }
    }

    // A click beside the menu closes it.
    MouseArea {
        visible: sources.visible
        width: root.width
        height: root.height + root.roomBelow
        acceptedButtons: Qt.AllButtons
        onPressed: sources.visible = false
    }

    SourceMenu {
        id: sources
        visible: false
        x: sourceButton.parent.x + sourceButton.x
        y: root.height - 6
        height: Math.min(implicitHeight, root.roomBelow)
        names: root.toolbar.sources
        current: root.toolbar.currentSource
        title: root.toolbar.sourceText
        onChosen: index => {
            visible = false;
            root.toolbar.selectSource(index);
        }
        onDismissed: visible = false
    }

    Connections {
        target: root.Window.window
        function onActiveChanged() {
            if (!root.Window.window.active)
                sources.visible = false;
        }
    }
}
