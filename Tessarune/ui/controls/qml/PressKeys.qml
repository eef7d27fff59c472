import QtQuick

// Set this as `Keys.forwardTo` of a button, so that Return and Enter press the button, as Space
// does. A held key presses once.
Item {
    signal pressed

    function press(event: KeyEvent) {
        if (!event.isAutoRepeat)
            pressed();
    }

    Keys.onReturnPressed: event => press(event)
    Keys.onEnterPressed: event => press(event)
}
