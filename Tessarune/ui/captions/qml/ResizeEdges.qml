import QtQuick
import QtQuick.Window

// The edges and corners by which the user resizes the window.
Item {
    id: root

    readonly property int thickness: 6
    readonly property int corner: 14

    component Edge: MouseArea {
        required property int edges
        acceptedButtons: Qt.LeftButton
        onPressed: Window.window.startSystemResize(edges)
    }

    Edge {
        edges: Qt.LeftEdge
        cursorShape: Qt.SizeHorCursor
        anchors { left: parent.left; top: parent.top; bottom: parent.bottom }
        width: root.thickness
    }
    Edge {
        edges: Qt.RightEdge
        cursorShape: Qt.SizeHorCursor
        anchors { right: parent.right; top: parent.top; bottom: parent.bottom }
        width: root.thickness
    }
    Edge {
        edges: Qt.TopEdge
        cursorShape: Qt.SizeVerCursor
        anchors { top: parent.top; left: parent.left; right: parent.right }
        height: root.thickness
    }
    Edge {
        edges: Qt.BottomEdge
        cursorShape: Qt.SizeVerCursor
        anchors { bottom: parent.bottom; left: parent.left; right: parent.right }
        height: root.thickness
    }
    Edge {
        edges: Qt.LeftEdge | Qt.TopEdge
        cursorShape: Qt.SizeFDiagCursor
        anchors { left: parent.left; top: parent.top }
        width: root.corner
        height: root.thickness
    }
    Edge {
        edges: Qt.RightEdge | Qt.TopEdge
        cursorShape: Qt.SizeBDiagCursor
        anchors { right: parent.right; top: parent.top }
        width: root.corner
        height: root.thickness
    }
    Edge {
        edges: Qt.LeftEdge | Qt.BottomEdge
        cursorShape: Qt.SizeBDiagCursor
        anchors { left: parent.left; bottom: parent.bottom }
        width: root.corner
        height: root.corner
    }
    Edge {
        edges: Qt.RightEdge | Qt.BottomEdge
        cursorShape: Qt.SizeFDiagCursor
        anchors { right: parent.right; bottom: parent.bottom }
        width: root.corner
        height: root.corner
    }
}
