import QtQuick
import Tessarune
import "qrc:/controls"

// The usage: the totals as three figures, and one of the measures as a chart by period.
FocusScope {
    id: root

    required property HistoryWindowModel model
    readonly property UsageModel usage: model.usage
    readonly property real margin: Math.round(Theme.body * 1.7)

    Column {
        id: header

        x: root.margin
        y: root.margin - Math.round(Theme.body * 0.3)
        width: parent.width - 2 * root.margin
        spacing: Math.round(Theme.body * 1.1)

        Item {
            width: parent.width
            height: Theme.controlHeight

            Label {
                anchors.verticalCenter: parent.verticalCenter
                text: root.model.texts.usage
                font.pixelSize: Theme.heading
                font.weight: Font.Medium
                Accessible.role: Accessible.Heading
            }
            SegmentedChoice {
                objectName: "period"
                anchors { right: parent.right; verticalCenter: parent.verticalCenter }
                name: root.model.texts.period
                choices: root.usage.periods
                current: root.usage.period
                onChosen: index => root.usage.period = index
            }
        }

        Row {
            id: totals

            width: parent.width
            spacing: Math.round(Theme.body * 0.8)
            visible: root.usage.count > 0

            // The chart draws the measure whose figure is chosen.
            Repeater {
                model: root.usage.measures

                UsageFigure {
                    required property int index
                    required property string modelData

                    objectName: "measure"
                    width: (totals.width - 2 * totals.spacing) / 3
                    text: modelData
                    figure: root.usage.totals[index]
                    checked: root.usage.measure === index
                    onClicked: root.usage.measure = index
                }
            }
        }

        Label {
            width: parent.width
            visible: text !== ""
            text: root.usage.uncounted
            color: Theme.quiet
        }
    }

    UsageChart {
        anchors { left: header.left; right: header.right; top: header.bottom; topMargin: Math.round(Theme.body * 1.1); bottom: parent.bottom; bottomMargin: root.margin }
        visible: root.usage.count > 0
        focus: true
        usage: root.usage
        name: root.model.texts.chart
    }

    Placeholder {
        anchors { left: parent.left; right: parent.right; top: header.bottom; bottom: parent.bottom }
        glyph: "chart"
        title: root.usage.emptyTitle
        text: root.usage.emptyText
    }
}
