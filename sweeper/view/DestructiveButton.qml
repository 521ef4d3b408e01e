import QtQuick
import Dunmere.Theme

// A button for what cannot be taken back: outlined, its title red. It never answers Return, not even with the focus on
// it; Space and the mouse do press it.
PlainButton {
    id: root

    required property string title

    text: title
    horizontalPadding: 14
    verticalPadding: 8

    // Instead of the click that PlainButton makes of Return.
    function clickOnce(event: KeyEvent) {
    }

    contentItem: AppText {
        objectName: "title"
        text: root.title
        color: AppTheme.errorRed
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
