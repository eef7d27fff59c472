import QtQuick
import Tessarune

// Captions in one of two layouts, or why there are none.
Item {
    id: root

    required property CaptionStageModel stage
    required property bool outlined

    readonly property bool reviewing: sourceList.reviewing || translationList.reviewing
    readonly property bool isSplit: !stage.isBilingual && stage.translates
    readonly property real seam: isSplit ? 29 : 0
    readonly property real blockHeight: isSplit ? (captions.height - seam) / 2 : captions.height

    function returnToNewest() {
        sourceList.returnToNewest();
        translationList.returnToNewest();
    }

    Item {
        id: captions

        // Longer lines are hard to find the beginning of.
        width: Math.min(parent.width - 56, root.stage.sourceFont.pixelSize * 40)
        anchors {
            horizontalCenter: parent.horizontalCenter
            top: parent.top
            topMargin: 14
            bottom: parent.bottom
            bottomMargin: Math.max(14, Math.min(root.stage.bottomPadding, root.height / 3))
        }
        opacity: root.stage.presentation === "content" ? 1 : 0
        visible: opacity > 0

        Behavior on opacity {
            NumberAnimation { duration: 180 }
        }

        CaptionList {
            id: sourceList
            objectName: "sourceList"
            width: parent.width
            height: root.blockHeight
            y: root.isSplit && root.stage.swaps ? root.blockHeight + root.seam : 0
            stage: root.stage
            rows: root.stage.rows
            outlined: root.outlined
        }

        Rectangle {
            visible: root.isSplit
            x: 14
            y: root.blockHeight + root.seam / 2
            width: parent.width - 28
            height: 1
            color: "#26ffffff"
        }

        CaptionList {
            id: translationList
            objectName: "translationList"
            visible: root.isSplit
            width: parent.width
            height: root.blockHeight
            y: root.stage.swaps ? 0 : root.blockHeight + root.seam
            stage: root.stage
            rows: root.stage.translations
            outlined: root.outlined
        }
    }

    EmptyState {
        anchors.centerIn: parent
        width: parent.width - 56
        presentation: root.stage.presentation
        title: root.stage.emptyTitle
        subtitle: root.stage.emptySubtitle
        color: root.stage.sourceColor
    }
}
