import QtQuick
import Tessarune
import "qrc:/controls"

// The choice of the model that transcribes the recording again.
Popover {
    id: root

    required property HistoryRefinementModel refinement
    required property var texts

    objectName: "refinePanel"
    width: Math.round(Theme.body * 26)
    onAboutToShow: refinement.refresh()
    onOpened: (models.enabled ? models : start).forceActiveFocus(Qt.TabFocusReason)

    contentItem: Column {
        spacing: Math.round(Theme.body * 0.9)

        Label {
            width: parent.width
            text: root.refinement.models.length > 0 ? root.texts.refineHint : root.texts.noModels
            color: Theme.quiet
            font.pixelSize: Theme.small
        }
        ChoiceBox {
            id: models

            objectName: "refineModel"
            width: parent.width
            visible: enabled
            enabled: root.refinement.models.length > 0
            name: root.texts.refineWith
            model: root.refinement.models
        }
        PushButton {
            id: start

            objectName: "runRefine"
            anchors.right: parent.right
            isPrimary: true
            enabled: root.refinement.canRefine && root.refinement.models.length > 0
            text: root.texts.refineNow
            onClicked: {
                root.refinement.refine(models.currentIndex);
                root.close();
            }
        }
    }
}
