import QtQuick

// A line one point thin, across the width or height that its container gives it. Where a point is not a whole number of
// pixels it is drawn as the nearest one: it would otherwise be thicker in one place than in another.
Rectangle {
    id: root

    readonly property real thickness: Math.round(Screen.devicePixelRatio) / Screen.devicePixelRatio

    objectName: "divider"
    implicitWidth: 1
    implicitHeight: 1
    color: AppTheme.dividerColor
    transform: Scale {
        xScale: root.width === 1 ? root.thickness : 1
        yScale: root.height === 1 ? root.thickness : 1
    }
}
