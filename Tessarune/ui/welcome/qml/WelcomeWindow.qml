import QtQuick
import QtQuick.Window
import Tessarune
import "qrc:/controls"
import "qrc:/captions" as Captions

// The page of the first start: the language and its downloads, then the captions of sample speech.
Window {
    id: window

    required property WelcomeModel model
    required property CaptionStageModel stage
    readonly property bool isDone: model.stage === "sample" || model.stage === "ready"

    title: model.texts.title
    color: Theme.window
    width: Math.round(Theme.body * 46)
    height: Math.round(Theme.body * 36)
    minimumWidth: Math.round(Theme.body * 34)
    minimumHeight: Math.round(Theme.body * 24)
    onClosing: close => {
        close.accepted = false;
        window.model.close();
    }

    Column {
        id: page

        anchors { left: parent.left; right: parent.right; top: parent.top; margins: Math.round(Theme.body * 2.4) }
        spacing: Theme.gap

        Label {
            width: parent.width
            text: window.model.texts.title
            font.pixelSize: Theme.title
            font.weight: Font.Medium
        }
        Label {
            width: parent.width
            text: window.model.stage === "sample" ? window.model.texts.sample : window.model.texts.about
            color: Theme.quiet
        }
    }

    Column {
        anchors { left: page.left; right: page.right; top: page.bottom; topMargin: Math.round(Theme.body * 1.8) }
        visible: window.model.stage !== "sample"
        spacing: Theme.gap

        Row {
            spacing: Theme.gap

            Label {
                anchors.verticalCenter: parent.verticalCenter
                text: window.model.texts.language
            }
            ChoiceBox {
                objectName: "language"
                name: window.model.texts.language
                enabled: window.model.stage === "ask"
                model: window.model.languages
                currentIndex: window.model.language
                onActivated: index => window.model.language = index
            }
        }
        Label {
            width: parent.width
            text: window.model.downloads
            color: Theme.quiet
        }
    }

    Rectangle {
        anchors { left: page.left; right: page.right; top: page.bottom; bottom: buttons.top; topMargin: Theme.gap; bottomMargin: Theme.gap }
        visible: window.model.stage === "sample"
        radius: Theme.radius
        color: "black"

        Captions.CaptionStage {
            anchors.fill: parent
            stage: window.stage
            outlined: false
        }
    }

    Column {
        anchors { left: page.left; right: buttons.left; rightMargin: Theme.gap; verticalCenter: buttons.verticalCenter }
        spacing: Math.round(Theme.gap / 2)

        Label {
            width: parent.width
            visible: text !== ""
            text: window.model.problem !== "" ? window.model.problem : window.model.isDownloading ? window.model.downloadText : ""
            color: window.model.problem !== "" ? Theme.trouble : Theme.quiet
            font.pixelSize: Theme.small
            maximumLineCount: 3
            elide: Text.ElideRight
        }
        ProgressLine {
            width: parent.width
            visible: window.model.isDownloading
            name: window.model.texts.downloading
            indeterminate: window.model.progress < 0
            value: Math.max(0, window.model.progress)
        }
    }

    Row {
        id: buttons

        anchors { right: page.right; bottom: parent.bottom; bottomMargin: Math.round(Theme.body * 2) }
        spacing: Theme.gap

        PushButton {
            objectName: "skip"
            visible: !window.isDone
            isPlain: true
            text: window.model.texts.skip
            onClicked: window.model.close()
        }
        PushButton {
            objectName: "begin"
            isPrimary: true
            enabled: window.model.stage !== "download"
            text: window.isDone ? window.model.texts.done : window.model.beginText
            focus: true
            onClicked: window.isDone ? window.model.close() : window.model.begin()
        }
    }
}
