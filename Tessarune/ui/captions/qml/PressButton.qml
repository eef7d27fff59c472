import QtQuick

// What the buttons of the caption window share: focus, keys and accessibility. A button adds its
// drawing, and a mouse area that calls activated().
Rectangle {
    id: root

    property string name: ""
    property color frame: "transparent"
    signal activated

    border.color: activeFocus ? "#7db8ff" : frame
    border.width: 1
    activeFocusOnTab: true
    Accessible.role: Accessible.Button
    Accessible.name: name
    Accessible.onPressAction: activated()
    Keys.onReturnPressed: event => press(event)
    Keys.onEnterPressed: event => press(event)
    Keys.onSpacePressed: event => press(event)
    // While the button has the focus, Space presses it and is not the window's shortcut.
    Keys.onShortcutOverride: event => event.accepted = event.key === Qt.Key_Space

    // A held key presses once.
    function press(event: KeyEvent) {
        if (!event.isAutoRepeat)
            activated();
    }
}
