import QtQuick
import QtQuick.Templates as T
import Tessarune
import "qrc:/controls"

// A list of words that can be searched and marked, above the card of the chosen word. In the list,
// K marks a word as known and F as a favourite, or removes the mark. Delete removes the word if
// `canRemove` is set.
FocusScope {
    id: root

    required property WordListModel words
    required property WordCardModel card
    required property var texts
    property bool canRemove: false
    property bool hasPlaces: false
    signal removed(int row)
    signal placeWanted(string word)

    onVisibleChanged: if (!visible) list.currentIndex = -1

    Row {
        id: tools

        width: parent.width
        spacing: Math.round(Theme.body * 0.6)

        EntryField {
            objectName: "searchWords"
            width: parent.width - kinds.width - parent.spacing
            focus: true
            name: root.texts.searchWords
            placeholderText: name
            glyph: "search"
            text: root.words.query
            onTextEdited: root.words.query = text
            Keys.onEscapePressed: event => {
                event.accepted = root.words.query !== "";
                root.words.query = "";
            }
            Keys.onDownPressed: list.forceActiveFocus()
        }
        ChoiceBox {
            id: kinds

            objectName: "wordKind"
            width: Math.min(fittingWidth, Math.round(root.width * 0.55))
            name: root.texts.which
            model: root.words.kinds
            currentIndex: root.words.kind
            onActivated: index => root.words.kind = index
        }
    }

    ListView {
        id: list

        objectName: "words"
        anchors { left: parent.left; right: parent.right; top: tools.bottom; topMargin: Math.round(Theme.body * 0.7); bottom: shown.top; bottomMargin: shown.visible ? Math.round(Theme.body * 0.7) : 0 }
        clip: true
        activeFocusOnTab: count > 0
        boundsBehavior: Flickable.StopAtBounds
        reuseItems: true
        highlightMoveDuration: 0
        keyNavigationEnabled: true
        model: root.words
        currentIndex: -1
        Accessible.role: Accessible.List
        Accessible.name: root.texts.wordList
        // The card always shows the current word of the list.
        onCurrentIndexChanged: root.words.choose(currentIndex)
        readonly property string filter: root.words.kind + " " + root.words.query
        onFilterChanged: {
            currentIndex = -1;
            positionViewAtBeginning();
        }

        Connections {
            target: root.words
            function onChanged() {
                if (list.currentIndex >= 0)
                    root.words.choose(list.currentIndex);
            }
        }
        onActiveFocusChanged: if (activeFocus && currentIndex < 0) currentIndex = 0
        // The card leaves less height.
        onHeightChanged: if (currentIndex >= 0) positionViewAtIndex(currentIndex, ListView.Contain)
        Keys.onPressed: event => {
            const isPlain = !(event.modifiers & (Qt.ControlModifier | Qt.AltModifier));
            if (event.key === Qt.Key_K && isPlain)
                root.words.toggleKnown(currentIndex);
            else if (event.key === Qt.Key_F && isPlain)
                root.words.toggleFavorite(currentIndex);
            else if (event.key === Qt.Key_Delete && root.canRemove)
                root.removed(currentIndex);
            else if (event.key === Qt.Key_Home)
                currentIndex = 0;
            else if (event.key === Qt.Key_End)
                currentIndex = count - 1;
            else if (event.key === Qt.Key_PageDown)
                currentIndex = Math.min(count - 1, currentIndex + 10);
            else if (event.key === Qt.Key_PageUp)
                currentIndex = Math.max(0, currentIndex - 10);
            else
                return;
            event.accepted = true;
        }
        T.ScrollBar.vertical: ListBar {}

        delegate: Rectangle {
            id: row

            required property int index
            required property string word
            required property string forms
            required property string uses
            required property bool known
            required property bool favorite
            readonly property bool isCurrent: ListView.isCurrentItem

            width: ListView.view.width - Math.round(Theme.body * 0.8)
            height: Math.round(Theme.body * 2.4)
            radius: Theme.radius
            color: isCurrent ? Theme.chosen : area.containsMouse ? Theme.hovered : "transparent"
            border.color: isCurrent && list.activeFocus ? Theme.accent : "transparent"
            border.width: 2
            Accessible.role: Accessible.ListItem
            Accessible.name: [word, forms, uses, known ? root.texts.known : "", favorite ? root.texts.favorite : ""].filter(part => part !== "").join(", ")
            Accessible.selected: isCurrent
            Accessible.onPressAction: list.currentIndex = index

            MouseArea {
                id: area

                anchors.fill: parent
                hoverEnabled: true
                onClicked: {
                    const chosen = row.index; // the list scrolls when the card opens
                    list.currentIndex = chosen;
                    list.forceActiveFocus();
                    root.words.choose(chosen);
                }
            }

            Label {
                id: name

                anchors { left: parent.left; leftMargin: Math.round(Theme.body * 0.7); verticalCenter: parent.verticalCenter }
                width: Math.min(implicitWidth, marks.x - x - Theme.gap)
                text: row.word
                wrapMode: Text.NoWrap
                elide: Text.ElideRight
                color: row.known ? Theme.quiet : Theme.text
                Accessible.ignored: true
            }
            Label {
                anchors { left: name.right; leftMargin: Math.round(Theme.body * 0.6); right: marks.left; rightMargin: Math.round(Theme.body * 0.4); verticalCenter: parent.verticalCenter }
                text: row.forms
                wrapMode: Text.NoWrap
                elide: Text.ElideRight
                color: Theme.quiet
                font.pixelSize: Theme.small
                Accessible.ignored: true
            }

            Row {
                id: marks

                anchors { right: parent.right; rightMargin: Math.round(Theme.body * 0.2); verticalCenter: parent.verticalCenter }

                Label {
                    anchors.verticalCenter: parent.verticalCenter
                    visible: text !== ""
                    width: Math.round(Theme.body * 2.6)
                    rightPadding: Math.round(Theme.body * 0.4)
                    horizontalAlignment: Text.AlignRight
                    text: row.uses
                    color: Theme.quiet
                    font.pixelSize: Theme.small
                    Accessible.ignored: true
                }
                GlyphButton {
                    focusPolicy: Qt.NoFocus
                    opacity: isOn || area.containsMouse || hovered || row.isCurrent ? 1 : 0
                    glyph: "check"
                    isOn: row.known
                    text: root.texts.known
                    name: text + ": " + row.word
                    Accessible.checked: isOn
                    onClicked: root.words.toggleKnown(row.index)
                }
                GlyphButton {
                    focusPolicy: Qt.NoFocus
                    opacity: isOn || area.containsMouse || hovered || row.isCurrent ? 1 : 0
                    glyph: "star"
                    isOn: row.favorite
                    text: root.texts.favorite
                    name: text + ": " + row.word
                    Accessible.checked: isOn
                    onClicked: root.words.toggleFavorite(row.index)
                }
                GlyphButton {
                    visible: root.canRemove
                    focusPolicy: Qt.NoFocus
                    opacity: area.containsMouse || hovered || row.isCurrent ? 1 : 0
                    glyph: "close"
                    text: root.texts.remove
                    name: text + ": " + row.word
                    onClicked: root.removed(row.index)
                }
            }
        }
    }

    Placeholder {
        anchors.fill: list
        glyph: "words"
        title: root.words.emptyTitle
        text: root.words.emptyText
    }

    WordCard {
        id: shown

        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: visible ? Math.min(implicitHeight, Math.round(root.height * 0.55)) : 0
        card: root.card
        texts: root.texts
        hasPlaces: root.hasPlaces
        onPlaceWanted: root.placeWanted(root.card.word)
        onClosed: {
            list.forceActiveFocus();
            list.currentIndex = -1;
        }
    }
}
