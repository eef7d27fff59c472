import QtQuick
import Tessarune
import "qrc:/captions" as Captions
import "qrc:/controls"

// The look of the captions, with sample captions that stay visible while the settings scroll.
Item {
    id: root

    required property SettingsWindowModel model
    required property CaptionPreview preview

    Component.onDestruction: preview.running = false

    // The preview runs only while the window is visible.
    Binding {
        target: root.preview
        property: "running"
        value: root.Window.window !== null && root.Window.window.visible
    }

    PaneTitle {
        id: heading
        x: rows.margin
        y: rows.margin
        width: parent.width - 2 * x
        text: root.model.paneTitle
    }

    // A bright and a dark background, as a film may have.
    Rectangle {
        id: scene

        anchors { left: parent.left; right: parent.right; top: heading.bottom; leftMargin: rows.margin; rightMargin: rows.margin }
        height: Math.round(Math.min(root.height * 0.4, Theme.body * 17))
        radius: Theme.radius + 2
        gradient: Gradient {
            orientation: Gradient.Horizontal
            GradientStop { position: 0; color: "#e9d8b4" }
            GradientStop { position: 0.45; color: "#7fa4b8" }
            GradientStop { position: 1; color: "#24394a" }
        }

        Rectangle {
            anchors { fill: parent; margins: 10 }
            radius: 14
            color: root.preview.window.background

            Captions.CaptionStage {
                // Laid out as wide as a new caption window, then scaled to the width of the pane.
                readonly property real usualWidth: 940

                width: usualWidth
                height: parent.height / scale
                scale: parent.width / usualWidth
                transformOrigin: Item.TopLeft
                stage: root.preview.stage
                outlined: root.preview.window.isTranslucent
                enabled: false
                Accessible.ignored: true
            }
        }
    }

    ScrollArea {
        id: rows

        anchors { left: parent.left; right: parent.right; top: scene.bottom; topMargin: 4; bottom: parent.bottom }

        SettingRows {
            width: parent.width
            model: root.model
            rows: root.model.rows
        }
        Item {
            width: 1
            height: Math.round(Theme.body)
        }
        PushButton {
            objectName: "control"
            text: root.model.texts.restoreCaptions
            onClicked: root.model.restoreCaptions()
        }
    }
}
