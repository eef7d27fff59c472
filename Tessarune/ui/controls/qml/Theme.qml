pragma Singleton
import QtQuick
import Tessarune.Desktop

// The colours and sizes of the windows. The caption window takes only sizes from here: its controls
// are always dark, and the look of its captions is set by the user. Texts have a contrast of at
// least 4.5:1 to their background.
QtObject {
    readonly property DesktopLook look: DesktopLook {}
    readonly property bool isDark: look.isDark
    readonly property bool reducesMotion: look.reducesMotion

    readonly property color window: isDark ? "#1b1b1e" : "#f5f5f7"
    readonly property color side: isDark ? "#151517" : "#ebebef"
    readonly property color panel: isDark ? "#242428" : "#ffffff"
    readonly property color raised: isDark ? "#2e2e33" : "#ffffff"
    readonly property color line: isDark ? "#22ffffff" : "#1c000000"
    readonly property color edge: isDark ? "#6e6e76" : "#85858d"
    readonly property color text: isDark ? "#f2f2f4" : "#1b1b1e"
    readonly property color quiet: isDark ? "#a8a8ae" : "#5c5c63"
    readonly property color accent: isDark ? "#7db8ff" : "#1763bf"
    readonly property color overAccent: isDark ? "#10243c" : "#ffffff"
    readonly property color good: isDark ? "#62c98a" : "#1f7a43"
    readonly property color trouble: isDark ? "#ff9488" : "#b3261e"
    readonly property color hovered: isDark ? "#14ffffff" : "#0f000000"
    readonly property color chosen: isDark ? "#29ffffff" : "#1a1763bf"

    readonly property real body: look.bodyPixels
    readonly property real small: Math.round(body * 0.9)
    readonly property real heading: Math.round(body * 1.15)
    readonly property real title: Math.round(body * 1.6)
    readonly property real icon: Math.round(body * 1.3)
    readonly property real controlHeight: Math.round(body * 2.3)
    readonly property real gap: Math.round(body * 0.8)
    readonly property real radius: 8
}
