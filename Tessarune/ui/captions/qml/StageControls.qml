import QtQuick
import Tessarune

// What stands below the captions: the state of the session and of the translation.
Item {
    id: root

    required property CaptionStageModel stage
    required property CaptionToolbarModel toolbar
    required property CaptionHearingModel hearing
    required property bool reviewing
    signal returnRequested

    LevelBars {
        anchors { left: parent.left; bottom: parent.bottom; leftMargin: 18; bottomMargin: 18 }
        visible: root.hearing.isListening
        opacity: 0.7
        level: root.hearing.level
        isListening: true
    }

    Column {
        anchors { horizontalCenter: parent.horizontalCenter; bottom: parent.bottom; bottomMargin: 14 }
        spacing: 8

        Pill {
            objectName: "notice"
            visible: root.toolbar.notice !== ""
            anchors.horizontalCenter: parent.horizontalCenter
            text: root.toolbar.notice
            isTrouble: true
            action: root.toolbar.dismissText
            maximumWidth: root.width - 56
            onActivated: root.toolbar.dismissNotice()
        }

        Pill {
            visible: root.toolbar.showsStatus
            anchors.horizontalCenter: parent.horizontalCenter
            text: root.toolbar.status
            isBusy: root.toolbar.isBusy
            isTrouble: root.toolbar.isTrouble
            maximumWidth: root.width - 56
        }

        Pill {
            objectName: "hearing"
            visible: !root.toolbar.showsStatus && !root.reviewing && root.hearing.text !== ""
            anchors.horizontalCenter: parent.horizontalCenter
            text: root.hearing.text
            maximumWidth: root.width - 56
        }

        Pill {
            visible: !root.toolbar.showsStatus && !root.reviewing && root.stage.translationStatus !== ""
            anchors.horizontalCenter: parent.horizontalCenter
            text: root.stage.translationStatus
            action: root.stage.translationRemedy
            maximumWidth: root.width - 56
            onActivated: root.stage.remedyTranslation()
        }

        Pill {
            visible: root.reviewing
            anchors.horizontalCenter: parent.horizontalCenter
            action: root.stage.newestText
            maximumWidth: root.width - 56
            onActivated: root.returnRequested()
        }
    }
}
