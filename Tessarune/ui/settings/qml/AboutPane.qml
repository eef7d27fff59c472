import QtQuick
import Tessarune
import "qrc:/controls"

// The program's version and licence, and the parts that it is built from.
ScrollArea {
    id: root

    required property AboutModel about

    Label {
        width: parent.width
        text: "Tessarune"
        font.pixelSize: Theme.title
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
    }
    Label {
        width: parent.width
        text: root.about.version
        color: Theme.quiet
    }
    Label {
        width: parent.width
        topPadding: Math.round(Theme.body * 0.6)
        text: root.about.texts.what
    }
    SectionTitle {
        width: parent.width
        text: root.about.texts.licence
    }
    Panel {
        width: parent.width

        Label {
            width: parent.width
            text: root.about.licence
            font.pixelSize: Theme.small
            color: Theme.quiet
        }
    }

    Repeater {
        model: root.about.parts

        Column {
            id: part

            required property var modelData

            width: parent ? parent.width : 0
            bottomPadding: Math.round(Theme.body * 0.5)

            SectionTitle {
                width: parent.width
                text: part.modelData.section
            }
            Label {
                width: parent.width
                text: part.modelData.name
            }
            Label {
                width: parent.width
                text: part.modelData.use === "" ? part.modelData.licence : part.modelData.use + " · " + part.modelData.licence
                color: Theme.quiet
                font.pixelSize: Theme.small
            }
        }
    }
}
