import QtQuick
import Tessarune

// What lies over the lower edge of the captions: level bars, notices, the state of the session and
// of the translation, and the button that returns to the newest caption.
Item {
    id: root

    required property CaptionStageModel stage
    required property CaptionToolbarModel toolbar
    required property CaptionHearingModel hearing
    required property bool reviewing
    // The height of the messages at the lower edge.
    readonly property real covered: messages.height > 0 ? messages.height + 18 : 0
    // Whether several messages fit at once.
    readonly property bool hasRoom: height >= Math.round(Theme.body * 20)
    signal returnRequested

    // Whether a message lies at this point.
    function covers(x: real, y: real): bool {
        return messages.childAt(x - messages.x, y - messages.y) !== null;
    }

    // Loaded on demand, because most of the time there is no message.
    component OnDemand: Loader {
        visible: active
        anchors.horizontalCenter: parent.horizontalCenter
    }

    LevelBars {
        anchors { left: parent.left; bottom: parent.bottom; leftMargin: Math.round(8 * unit); bottomMargin: 18 }
        visible: root.hearing.isListening
        opacity: 0.7
        level: root.hearing.level
        isListening: true
    }

    Column {
        id: messages

        // The height of all messages but the notice.
        readonly property real others: [status, remedy, quiet, translation, back].reduce((sum, pill) => sum + (pill.active ? pill.height + spacing : 0), 0)

        anchors { horizontalCenter: parent.horizontalCenter; bottom: parent.bottom; bottomMargin: 14 }
        spacing: 8

        OnDemand {
            active: root.toolbar.notice !== ""
            sourceComponent: Pill {
                objectName: "notice"
                text: root.toolbar.notice
                isTrouble: root.toolbar.noticeIsTrouble
                mostLines: 12
                action: root.toolbar.dismissText
                maximumWidth: root.width - 56
                // Leaves room for the toolbar.
                maximumHeight: root.height - Math.round(Theme.body * 2.6) - 36 - messages.others
                onActivated: root.toolbar.dismissNotice()
            }
        }

        OnDemand {
            id: status
            active: root.toolbar.showsStatus
            sourceComponent: Pill {
                text: root.toolbar.status
                isBusy: root.toolbar.isBusy
                isTrouble: root.toolbar.isTrouble
                action: root.toolbar.statusRemedy
                maximumWidth: root.width - 56
                onActivated: root.toolbar.remedyStatus()
            }
        }

        OnDemand {
            id: remedy
            active: root.stage.emptyRemedy !== ""
            sourceComponent: Pill {
                action: root.stage.emptyRemedy
                maximumWidth: root.width - 56
                onActivated: root.stage.remedyEmpty()
            }
        }

        OnDemand {
            id: quiet
            active: !root.toolbar.showsStatus && !root.reviewing && root.hearing.text !== ""
            sourceComponent: Pill {
                objectName: "hearing"
                text: root.hearing.text
                maximumWidth: root.width - 56
            }
        }

        // The state of the translation. A low window shows it only if the user can act on it, or if
        // neither the status nor the button that returns to the newest caption needs the room.
        OnDemand {
            id: translation
            active: root.stage.translationStatus !== "" && (root.hasRoom || root.stage.translationRemedy !== "" || !root.toolbar.showsStatus && !root.reviewing)
            sourceComponent: Pill {
                objectName: "translation"
                text: root.stage.translationStatus
                action: root.stage.translationRemedy
                maximumWidth: root.width - 56
                onActivated: root.stage.remedyTranslation()
            }
        }

        OnDemand {
            id: back
            active: root.reviewing
            sourceComponent: Pill {
                action: root.stage.newestText
                maximumWidth: root.width - 56
                onActivated: root.returnRequested()
            }
        }
    }
}
