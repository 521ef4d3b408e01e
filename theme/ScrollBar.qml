import QtQuick
import QtQuick.Templates as T

// A thin scroll bar over the edge of its Flickable: always there while there is something to scroll, darker in use.
T.ScrollBar {
    id: root

    implicitWidth: 10
    implicitHeight: 10
    padding: 2
    minimumSize: 0.1
    // Screen readers move from row to row instead.
    Accessible.ignored: true
    visible: policy === T.ScrollBar.AlwaysOn || (policy === T.ScrollBar.AsNeeded && size < 1)

    contentItem: Rectangle {
        objectName: "scrollThumb"
        radius: 3
        color: AppTheme.primaryText
        opacity: root.pressed ? 0.5 : root.hovered || root.active ? 0.4 : 0.2
    }
}
