import QtQuick
import Dunmere.Theme

// One row of the sidebar: icon and title, as wide as the sidebar, clickable all over; `clicked` is its action.
// Selection changes the icon's colour and the background, nothing else.
PlainButton {
    id: root

    required property string title
    required property string systemImage
    required property bool isSelected

    objectName: "sidebarRow"
    text: title
    horizontalPadding: 10
    verticalPadding: 8

    Accessible.selectable: true
    Accessible.selected: isSelected

    contentItem: SidebarLabel {
        title: root.title
        systemImage: root.systemImage
        iconColor: root.isSelected ? AppTheme.accentTint : AppTheme.primaryText
    }
    background: ContinuousRectangle {
        objectName: "background"
        radius: AppTheme.cornerRadius
        color: root.isSelected ? AppTheme.sidebarSelectionFill : "transparent"
    }
}
