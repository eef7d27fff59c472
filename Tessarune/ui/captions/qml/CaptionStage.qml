import QtQuick
import Tessarune

// Captions in one of two layouts, or why there are none.
Item {
    id: root

    required property CaptionStageModel stage
    required property bool outlined
    // The height of the messages that cover the lower edge.
    property real covered: 0

    readonly property bool reviewing: sourceList.reviewing || translationList.reviewing
    readonly property bool isSplit: !stage.isBilingual && stage.translates
    readonly property real dividerHeight: isSplit ? 29 : 0
    // The maximum height of a list, without the margins of 14 above and below. If the newest row is
    // high, its list grows to this height, into the space below the captions. A row for which this
    // height is too little reserves no space for its pending translation.
    readonly property real mostHeight: isSplit ? (height - 28 - dividerHeight) / 2 : height - 28
    readonly property real neededHeight: isSplit ? 2 * (Math.max(sourceList.newestHeight, translationList.newestHeight) + underToolbar) + dividerHeight : sourceList.newestHeight + underToolbar
    // The margin beside the captions, where the level bars are.
    readonly property real side: Math.max(28, Math.round(Theme.body * 2))
    // The approximate height that the toolbar covers.
    readonly property real underToolbar: Math.round(Theme.body * 2.4)
    readonly property real blockHeight: isSplit ? (captions.height - dividerHeight) / 2 : captions.height

    readonly property string selectedText: sourceList.selection.text !== "" ? sourceList.selection.text : translationList.selection.text
    property CaptionList selecting: sourceList

    function pointIn(from: Item, x: real, y: real): point {
        return from.mapToItem(selecting.selection.list, x, y);
    }
    function chooseList(from: Item, x: real, y: real): point {
        clearSelection();
        const isInTranslations = translationList.visible && translationList.contains(from.mapToItem(translationList, x, y));
        selecting = isInTranslations ? translationList : sourceList;
        return pointIn(from, x, y);
    }
    function beginSelection(from: Item, x: real, y: real) {
        const start = chooseList(from, x, y);
        selecting.selection.begin(start.x, start.y);
    }
    function selectWord(from: Item, x: real, y: real) {
        const start = chooseList(from, x, y);
        selecting.selection.selectWord(start.x, start.y);
    }
    function extendSelection(from: Item, x: real, y: real) {
        const end = pointIn(from, x, y);
        selecting.selection.extend(end.x, end.y);
    }
    function selectAll() {
        selecting.selection.selectAll();
    }
    function clearSelection() {
        sourceList.selection.clear();
        translationList.selection.clear();
    }

    function scrollByKey(pages: real) {
        sourceList.scrollByKey(pages);
        if (isSplit)
            translationList.scrollByKey(pages);
    }
    function returnToNewest() {
        sourceList.returnToNewest();
        translationList.returnToNewest();
    }

    Item {
        id: captions

        // Limits the length of a line: from the end of a very long one, the eye misses the start of
        // the next.
        width: Math.min(parent.width - 2 * root.side, root.stage.sourceFont.pixelSize * 40)
        anchors {
            horizontalCenter: parent.horizontalCenter
            top: parent.top
            topMargin: 14
            bottom: parent.bottom
            bottomMargin: Math.max(14, Math.min(Math.max(root.covered, Math.min(root.stage.bottomPadding, root.height / 3)), root.height - 14 - root.neededHeight))
        }
        opacity: root.stage.presentation === "content" ? 1 : 0
        visible: opacity > 0

        Behavior on opacity {
            enabled: !root.stage.reducesMotion
            NumberAnimation { duration: 180 }
        }

        CaptionList {
            id: sourceList
            objectName: "sourceList"
            width: parent.width
            height: root.blockHeight
            y: root.isSplit && root.stage.swaps ? root.blockHeight + root.dividerHeight : 0
            stage: root.stage
            rows: root.stage.rows
            outlined: root.outlined
            mostHeight: root.mostHeight
        }

        Rectangle {
            visible: root.isSplit
            x: 14
            y: root.blockHeight + root.dividerHeight / 2
            width: parent.width - 28
            height: 1
            color: "#26ffffff"
        }

        CaptionList {
            id: translationList
            visible: root.isSplit
            width: parent.width
            height: root.blockHeight
            y: root.stage.swaps ? 0 : root.blockHeight + root.dividerHeight
            stage: root.stage
            rows: root.stage.translations
            outlined: root.outlined
            mostHeight: root.mostHeight
        }
    }

    EmptyState {
        anchors.horizontalCenter: parent.horizontalCenter
        y: Math.max(0, Math.min((root.height - height) / 2, root.height - root.covered - 10 - height))
        width: parent.width - 2 * root.side
        showsDots: y > root.underToolbar
        presentation: root.stage.presentation
        title: root.stage.emptyTitle
        subtitle: root.stage.emptySubtitle
        color: root.stage.sourceColor
        reducesMotion: root.stage.reducesMotion
    }
}
