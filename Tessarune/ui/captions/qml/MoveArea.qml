import QtQuick
import QtQuick.Window

// Dragging moves the window wherever no other item takes the mouse. After a double click or with
// the Shift key, dragging selects text instead. Wheel events reach the items below.
MouseArea {
    id: root

    required property CaptionStage stage
    property point pressed
    property bool selects: false
    property bool moves: false
    // A press and a release that neither moved the window nor selected text.
    signal tapped(real x, real y)

    acceptedButtons: Qt.LeftButton
    onPressed: mouse => {
        pressed = Qt.point(mouse.x, mouse.y);
        moves = false;
        selects = (mouse.modifiers & Qt.ShiftModifier) !== 0;
        if (selects)
            stage.beginSelection(root, mouse.x, mouse.y);
    }
    onDoubleClicked: mouse => {
        selects = true;
        stage.selectWord(root, mouse.x, mouse.y);
    }
    onClicked: mouse => {
        if (selects)
            return;
        stage.clearSelection();
        if (!moves)
            tapped(mouse.x, mouse.y);
    }
    onPositionChanged: mouse => {
        if (selects)
            stage.extendSelection(root, mouse.x, mouse.y);
        else if (Math.hypot(mouse.x - pressed.x, mouse.y - pressed.y) >= Application.styleHints.startDragDistance) {
            moves = true;
            Window.window.startSystemMove();
        }
    }
}
