import QtQuick

// A line one point thin, across the width or height that its container gives it.
Rectangle {
    objectName: "divider"
    implicitWidth: 1
    implicitHeight: 1
    color: AppTheme.dividerColor
}
