import QtQuick
import Dunmere.Theme

// What to do when sizes stay at zero.
AppText {
    objectName: "permissionHint"
    text: qsTr("Direct install: sweeps use normal macOS file permissions (like Finder). If sizes stay at zero for another user’s home or protected areas, enable Full Disk Access for Dunmere in System Settings.")
    color: AppTheme.mutedLabel
    font.pixelSize: 11
    wrapMode: Text.Wrap
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
