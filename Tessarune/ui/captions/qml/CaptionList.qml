import QtQuick
import Tessarune

// A list of caption rows that scrolls to the newest line. A short list is aligned to the bottom, so
// that the newest line is always in the same place.
Item {
    id: root

    required property CaptionStageModel stage
    required property CaptionRowsModel rows
    required property bool outlined
    // The maximum height of this list.
    required property real mostHeight
    readonly property alias newestHeight: follow.newestHeight
    property alias reviewing: follow.reviewing
    property alias selection: marked
    // Height added above the visible top, so that rows there still exist while the list glides up.
    readonly property real room: 160

    function returnToNewest() {
        follow.returnToNewest();
    }

    function scrollByKey(pages: real) {
        follow.scrollByKey(pages);
    }

    clip: true

    ListView {
        id: list

        objectName: "list"
        Accessible.role: Accessible.List
        Accessible.name: root.stage.listName
        anchors { fill: parent; topMargin: -root.room }
        topMargin: root.room
        model: root.rows
        boundsBehavior: Flickable.StopAtBounds
        cacheBuffer: 320
        transform: Translate { y: follow.glide }
        delegate: CaptionRow {
            stage: root.stage
            outlined: root.outlined
            selection: marked
            isPrimary: index >= root.rows.firstPrimary
            isReviewing: follow.reviewing
            mostHeight: root.mostHeight
            fromTop: y - list.contentY - root.room + follow.glide
            belowEnd: fromTop + height - root.height
        }
        add: Transition {
            enabled: !root.stage.reducesMotion
            NumberAnimation { property: "fade"; from: 0; to: 1; duration: 220 }
        }

        onMovementStarted: follow.movementStarted()
        onMovementEnded: follow.movementEnded()
        onContentYChanged: follow.moved()
        onContentHeightChanged: follow.contentHeightChanged()
        onHeightChanged: follow.heightChanged()
    }

    CaptionSelection {
        id: marked
        stage: root.stage
        rows: root.rows
        list: list
    }

    CaptionFollow {
        id: follow
        stage: root.stage
        list: list
        hiddenHeight: root.room
    }
}
