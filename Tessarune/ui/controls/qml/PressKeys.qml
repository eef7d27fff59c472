import QtQuick

// Set as `Keys.forwardTo` of a button, this adds Return and Enter to Space. A held key presses once.
Item {
    signal pressed

    function press(event: KeyEvent) {
        if (!event.isAutoRepeat)
            pressed();
    }

    Keys.onReturnPressed: event => press(event)
    Keys.onEnterPressed: event => press(event)
}
