import QtQuick
import QtQuick.Window
import Tessarune

// The caption window: the captions, the messages over them, and, once it has been drawn, its tools.
Window {
    id: window

    required property CaptionWindowModel model
    required property CaptionStageModel stage
    required property CaptionToolbarModel toolbar
    required property CaptionCommandsModel commands
    required property CaptionHearingModel hearing
    // Whether the tools are loaded and fully visible.
    readonly property bool isComplete: tools.opacity === 1
    readonly property bool menuOpen: tools.item?.menuOpen ?? false

    title: "Tessarune"
    color: "transparent"
    flags: (model.isListed ? Qt.Window : Qt.Tool) | Qt.FramelessWindowHint | (model.keepsOnTop ? Qt.WindowStaysOnTopHint : 0)
    width: Math.round(940 * Theme.look.textScale)
    height: Math.round(400 * Theme.look.textScale)
    minimumWidth: Math.min(Screen.width, Math.max(380, Math.round(Theme.body * 26)))
    minimumHeight: Math.min(Screen.height, Math.max(180, Math.round(Theme.body * 13)))
    // Set once and not bound: from then on the user decides where the window is.
    Component.onCompleted: {
        width = Math.min(width, Screen.width - 40);
        height = Math.min(height, Screen.height - 40);
        x = Screen.virtualX + (Screen.width - width) / 2;
        y = Screen.virtualY + Math.max(0, Screen.height - height - 96);
    }
    onMenuOpenChanged: {
        model.setMenuOpen(menuOpen);
        if (!menuOpen)
            body.forceActiveFocus(); // the keys scroll again
    }
    onClosing: close => {
        close.accepted = false;
        window.model.close();
    }

    Rectangle {
        id: body

        readonly property var pagesByKey: ({ [Qt.Key_PageUp]: -0.8, [Qt.Key_PageDown]: 0.8, [Qt.Key_Up]: -0.2, [Qt.Key_Down]: 0.2 })

        anchors.fill: parent
        focus: true
        Keys.onPressed: event => {
            if (event.key === Qt.Key_End)
                captions.returnToNewest();
            else if (event.key in pagesByKey)
                captions.scrollByKey(pagesByKey[event.key]);
            else if (event.key === Qt.Key_Escape)
                body.forceActiveFocus(); // leaves the toolbar, which then hides
            else if (event.key === Qt.Key_Tab && !window.model.showsChrome)
                window.model.showToolbar(); // the next Tab leads into it
            else
                return;
            event.accepted = true;
        }
        radius: window.visibility === Window.Maximized || window.visibility === Window.FullScreen ? 0 : 16
        color: window.model.background

        HoverHandler {
            onHoveredChanged: window.model.setHovered(hovered)
        }

        CaptionStage {
            id: captions
            anchors.fill: parent
            stage: window.stage
            outlined: window.model.isTranslucent
            covered: controls.covered
        }

        MoveArea {
            anchors.fill: parent
            stage: captions
            onPressed: body.forceActiveFocus()
            onTapped: (x, y) => {
                // A click on the idle stage starts captions, as its text says. A click on a message
                // or beside a button of the toolbar is not meant for the stage.
                if (window.stage.presentation === "empty-idle" && !controls.covers(x, y) && y >= (tools.item?.toolbarHeight ?? 0))
                    window.toolbar.toggle();
            }
        }

        StageControls {
            id: controls
            anchors.fill: parent
            stage: window.stage
            toolbar: window.toolbar
            hearing: window.hearing
            reviewing: captions.reviewing
            onReturnRequested: captions.returnToNewest()
        }

        Rectangle {
            anchors.fill: parent
            radius: body.radius
            color: "transparent"
            border.color: "#20ffffff"
            border.width: 1
        }

        // Loaded only after the window has been drawn once, so that the captions appear sooner.
        Loader {
            id: tools
            anchors.fill: parent
            active: window.model.isPainted
            asynchronous: true
            opacity: status === Loader.Ready ? 1 : 0
            sourceComponent: WindowTools {
                model: window.model
                toolbar: window.toolbar
                commands: window.commands
                hearing: window.hearing
                stage: captions
                radius: body.radius
            }

            Behavior on opacity {
                enabled: !Theme.reducesMotion
                NumberAnimation { duration: 160 }
            }
        }
    }
}
