import Dunmere.Theme

// The rule after every column. It cannot be dragged.
Divider {
    objectName: "columnDivider"
    color: AppTheme.border
}
