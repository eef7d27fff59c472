import QtQuick
import QtQuick.Window

// Takes hold of the window wherever nothing else is. Wheels reach what is below.
MouseArea {
    property point pressed

    acceptedButtons: Qt.LeftButton
    onPressed: mouse => pressed = Qt.point(mouse.x, mouse.y)
    onPositionChanged: mouse => {
        if (Math.hypot(mouse.x - pressed.x, mouse.y - pressed.y) >= Application.styleHints.startDragDistance)
            Window.window.startSystemMove();
    }
}
