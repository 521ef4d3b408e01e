import QtQuick
import Dunmere.Theme

// The outlined white button; `clicked` is its action.
PlainButton {
    id: root

    required property string title

    objectName: "secondaryButton"
    text: title
    font.weight: Font.Medium
    horizontalPadding: 14
    verticalPadding: 8

    background: ContinuousRectangle {
        objectName: "background"
        radius: AppTheme.cornerRadius
        color: AppTheme.card
        borderColor: AppTheme.border
        borderWidth: 1
    }
}
