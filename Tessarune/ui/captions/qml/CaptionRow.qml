import QtQuick
import Tessarune

// A source line and its translation, or one of them alone.
Item {
    id: root

    required property CaptionStageModel stage
    // Whether texts have an outline because the screen behind the window shows through. Such texts
    // are dimmed less.
    required property bool outlined
    required property CaptionSelection selection
    required property bool isPrimary
    required property bool isReviewing
    // How far the row's top is below the visible top of the list, and the row's bottom below the
    // visible bottom.
    required property real fromTop
    required property real belowEnd
    // The maximum height of the list.
    required property real mostHeight
    required property int index
    required property string source
    required property string translation
    required property bool ghost
    required property bool growing
    property real fade: 1

    readonly property bool isNewest: index + 1 === ListView.view?.count
    readonly property bool hasSource: source !== ""
    readonly property bool isBilingual: stage.isBilingual && hasSource
    readonly property bool translationFirst: isBilingual && stage.swaps
    readonly property real gap: isBilingual ? Math.round(stage.translationFont.pixelSize * 0.2) : 0
    readonly property real spacing: Math.round(stage.sourceFont.pixelSize * (stage.isBilingual ? 0.62 : 0.34))

    // For the selection, which looks up characters in these items.
    readonly property Item sourceItem: sourceText
    readonly property Item translationItem: translationText

    Accessible.role: Accessible.ListItem
    Accessible.name: [source, translation].filter(text => text !== "").join("\n")
    width: ListView.view ? ListView.view.width : 0
    height: sourceText.shownHeight + gap + translationText.shownHeight + spacing
    // Rows that scroll out fade instead of being cut. The newest row does not fade at the top,
    // because it may be higher than the list.
    opacity: fade * Math.max(0, Math.min(1, isNewest ? 1 : (fromTop / height + 0.6) / 0.5, 1.2 - belowEnd / height))

    SelectionMarks {
        selection: root.selection
        row: root.index
        isTranslation: false
        of: sourceText
    }

    SelectionMarks {
        selection: root.selection
        row: root.index
        isTranslation: true
        of: translationText
    }

    SmoothText {
        id: sourceText

        readonly property real shownHeight: root.hasSource ? Math.max(implicitHeight, sourceMetrics.lineSpacing * lineHeight) : 0

        visible: root.hasSource
        y: root.translationFirst ? translationText.shownHeight + root.gap : 0
        width: root.width
        stage: root.stage
        source: root.source
        growing: root.growing
        font: root.stage.sourceFont
        color: root.stage.sourceColor
        opacity: root.isPrimary ? 1 : root.isReviewing || root.outlined ? 0.86 : 0.62
        style: root.outlined ? Text.Outline : Text.Normal
        styleColor: "#d0000000"

        Behavior on opacity {
            enabled: !root.stage.reducesMotion
            NumberAnimation { duration: 260 }
        }
    }

    Text {
        id: translationText

        // Space for one line is reserved if the list has room for it, so that nothing moves when a
        // translation of one line arrives.
        readonly property real oneLine: metrics.lineSpacing * lineHeight
        readonly property bool hasPlace: root.isBilingual
                                         ? text !== "" || sourceText.shownHeight + root.gap + oneLine <= root.mostHeight : !root.hasSource
        readonly property real shownHeight: hasPlace ? Math.max(implicitHeight, oneLine) : 0
        // A preview is dimmer than a finished translation. In a dimmed or outlined row the
        // difference is small, so that the contrast ratio stays above 4.5.
        readonly property real ghostOpacity: !root.ghost ? 1 : root.outlined ? 0.85 : root.isPrimary ? 0.62 : 0.88

        visible: text !== ""
        y: root.isBilingual && !root.translationFirst ? sourceText.shownHeight + root.gap : 0
        width: root.width
        text: root.translation
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        lineHeight: 1.12
        font: root.stage.translationFont
        color: root.stage.translationColor
        opacity: (text === "" ? 0 : root.isPrimary ? 0.9 : root.isReviewing || root.outlined ? 0.78 : 0.56) * ghostOpacity
        style: root.outlined ? Text.Outline : Text.Normal
        styleColor: "#d0000000"

        Behavior on opacity {
            enabled: !root.stage.reducesMotion
            NumberAnimation { duration: 260 }
        }
    }

    FontMetrics {
        id: sourceMetrics
        font: root.stage.sourceFont
    }

    FontMetrics {
        id: metrics
        font: root.stage.translationFont
    }
}
