import QtQuick
import Tessarune

// Start and stop, the source, and the window's own buttons.
Item {
    id: root

    required property CaptionToolbarModel toolbar
    required property CaptionCommandsModel commands
    required property CaptionHearingModel hearing
    required property real radius
    required property bool shown
    // Whether the buttons exist for a screen reader while the toolbar is not shown.
    required property bool isRead
    readonly property bool menuOpen: sources.isOpen
    readonly property real size: Math.round(Theme.body * (toolbar.isCompact ? 2 : 2.6))
    signal closeRequested
    signal menuRequested(Item item, real x, real y)

    height: size + 18
    opacity: shown ? 1 : 0
    visible: opacity > 0 || isRead

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

    CaptionToolbarFit {
        id: fit
        room: root.width - 24
        toggle: toggle.bareWidth + 10
        toggleText: root.toolbar.isCompact ? 0 : toggle.textWidth
        source: sourceButton.bareWidth + 10
        sourceText: Math.min(sourceButton.textWidth, Theme.body * 7)
        button: root.size + buttons.spacing
        wanted: root.toolbar.buttons
    }

    Row {
        anchors { left: parent.left; leftMargin: 12; verticalCenter: parent.verticalCenter; verticalCenterOffset: -2 }
        spacing: 10

        ToggleButton {
            id: toggle
            anchors.verticalCenter: parent.verticalCenter
            height: root.size
            showsText: fit.showsToggleText && !root.toolbar.isCompact
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
            hint: root.toolbar.texts.source
            level: root.hearing.level
            isListening: root.toolbar.isListening
            showsText: fit.showsSourceText
            maximumWidth: fit.room - toggle.width - buttons.width - 20
            onActivated: {
                root.toolbar.refreshSources();
                sources.openAt(sourceButton, 0, height + 4);
            }
        }
    }

    Row {
        id: buttons

        anchors { right: parent.right; rightMargin: 10; verticalCenter: parent.verticalCenter; verticalCenterOffset: -2 }
        spacing: 2

        ToolButton {
            id: more
            height: root.size
            visible: fit.showsMore
            icon: "more"
            text: root.toolbar.texts.more
            onActivated: root.menuRequested(more, 0, height + 4)
        }
        Repeater {
            model: fit.buttons

            ToolButton {
                required property string modelData

                height: root.size
                icon: modelData
                isOn: modelData === "pin" && root.toolbar.keepsOnTop
                text: root.toolbar.texts[modelData]
                onActivated: root.commands.pressButton(modelData)
            }
        }
        ToolButton {
            height: root.size
            icon: "close"
            text: root.toolbar.texts.close
            onActivated: root.closeRequested()
        }
    }

    // A finger must not press a button that is not drawn.
    MouseArea {
        anchors.fill: parent
        enabled: !root.shown
    }

    SourceMenu {
        id: sources
        toolbar: root.toolbar
    }
}
