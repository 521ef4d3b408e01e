import QtQuick
import Dunmere.Theme

// The outlined white button; `clicked` is its action.
PlainButton {
    id: root

    required property string title
    property color titleColor: AppTheme.primaryText

    objectName: "secondaryButton"
    text: title
    horizontalPadding: 14
    verticalPadding: 8

    contentItem: AppText {
        objectName: "title"
        text: root.title
        color: root.titleColor
        font.pixelSize: 14
        font.weight: Font.Medium
        horizontalAlignment: Text.AlignHCenter
        Accessible.ignored: true
    }
    background: ContinuousRectangle {
        objectName: "background"
        radius: AppTheme.cornerRadius
        color: AppTheme.card
        borderColor: AppTheme.border
        borderWidth: 1
    }
}
