import QtQuick

// Where the keyboard is: an outline of its parent.
Rectangle {
    anchors.fill: parent
    color: "transparent"
    border.width: 2
    border.color: AppTheme.focusRing
}
