import QtQuick
import Dunmere.Theme

// The rule after every column. It cannot be dragged.
Rectangle {
    objectName: "columnDivider"
    implicitWidth: 1
    color: AppTheme.border
}
