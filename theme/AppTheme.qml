pragma Singleton

import QtQuick

// Every colour of the interface by its name: sRGB, and opaque unless said otherwise.
QtObject {
    readonly property color accentOrange: Qt.rgba(240 / 255, 90 / 255, 40 / 255, 1)
    readonly property color accentOrangeDeep: Qt.rgba(217 / 255, 74 / 255, 31 / 255, 1)
    readonly property color accentTint: accentOrange
    readonly property color canvas: Qt.rgba(247 / 255, 247 / 255, 247 / 255, 1)
    readonly property color card: Qt.rgba(1, 1, 1, 1)
    readonly property color border: Qt.rgba(0.9, 0.9, 0.9, 1)
    readonly property color primaryText: Qt.rgba(0, 0, 0, 1)
    readonly property color secondaryText: Qt.rgba(0.443, 0.443, 0.443, 1)
    readonly property color mutedLabel: Qt.rgba(0.55, 0.55, 0.55, 1)
    readonly property color sidebarSelection: Qt.rgba(0.93, 0.93, 0.93, 1)
    readonly property color sidebarSelectionFill: sidebarSelection
    readonly property color inputFill: Qt.rgba(0.96, 0.96, 0.96, 1)

    // What the panes need besides the palette.
    readonly property color onAccent: Qt.rgba(1, 1, 1, 1) // text on an orange fill
    readonly property color errorRed: Qt.rgba(1, 59 / 255, 48 / 255, 1)
    readonly property real errorOpacity: 0.85
    readonly property color dividerColor: Qt.rgba(0, 0, 0, 0.1)
    readonly property color focusRing: Qt.alpha(accentOrange, 0.5)
    readonly property color focusedSelection: Qt.tint(card, Qt.alpha(accentTint, 0.22))
    readonly property color completeZero: Qt.rgba(0.2, 0.55, 0.35, 1) // a size of nothing, with nothing to come
    readonly property color behindQuestion: Qt.rgba(0, 0, 0, 0.25) // dims the window

    readonly property real cornerRadius: 8
    readonly property real pressedOpacity: 0.75
    readonly property real disabledOpacity: 0.5

    // Height in pixels of one line of text of this size: about 1.2 of the size, as one font would have it, so that no
    // row changes its height with the desktop's font or with a fallback font inside a name.
    function lineHeight(pixelSize: int): int {
        return pixelSize >= 20 ? Math.round(pixelSize * 1.18) : pixelSize >= 14 ? Math.round(pixelSize * 1.21) : pixelSize + 3;
    }
}
