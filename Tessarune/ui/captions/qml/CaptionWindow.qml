import QtQuick
import QtQuick.Window
import Tessarune

Window {
    id: window

    required property CaptionWindowModel model
    required property CaptionStageModel stage
    required property CaptionToolbarModel toolbar

    title: "Tessarune"
    color: "transparent"
    flags: Qt.Window | Qt.FramelessWindowHint | (model.keepsOnTop ? Qt.WindowStaysOnTopHint : 0)
    width: 940
    height: 400
    minimumWidth: 380
    minimumHeight: 180
    // Once, and no bindings: from then on the window stands where the user puts it.
    Component.onCompleted: {
        width = Math.min(width, Screen.width - 40);
        x = Screen.virtualX + (Screen.width - width) / 2;
        y = Screen.virtualY + Math.max(0, Screen.height - height - 96);
    }
    onClosing: close => {
        close.accepted = false;
        window.model.close();
    }

    Rectangle {
        id: body
        anchors.fill: parent
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
        }

        MoveArea {
            anchors.fill: parent
        }

        StageControls {
            anchors.fill: parent
            stage: window.stage
            toolbar: window.toolbar
            reviewing: captions.reviewing
            onReturnRequested: captions.returnToNewest()
        }

        CaptionToolbar {
            anchors { left: parent.left; right: parent.right; top: parent.top }
            toolbar: window.toolbar
            background: window.model.background
            radius: body.radius
            shown: window.model.showsChrome
            roomBelow: window.height - height
            onMenuOpenChanged: window.model.setMenuOpen(menuOpen)
            onCloseRequested: window.model.close()
        }

        Rectangle {
            anchors.fill: parent
            radius: body.radius
            color: "transparent"
            border.color: "#20ffffff"
            border.width: 1
        }

        ResizeEdges {
            anchors.fill: parent
        }
    }

    Shortcut {
        sequence: "Space"
        onActivated: window.toolbar.toggleByKey()
    }
    Shortcut {
        sequence: "Ctrl+P"
        onActivated: window.toolbar.togglePin()
    }
    Shortcut {
        sequence: "Ctrl+L"
        onActivated: window.toolbar.cycleLayout()
    }
    Shortcut {
        sequence: "Ctrl+R"
        onActivated: window.toolbar.swapOrder()
    }
    Shortcut {
        sequences: ["Ctrl+W", "Ctrl+Q"]
        onActivated: window.model.close()
    }
}
