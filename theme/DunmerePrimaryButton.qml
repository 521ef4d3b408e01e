import QtQuick
import Dunmere.Theme

// The filled orange button; `clicked` is its action. The style called `Accent` is the darker fill.
PlainButton {
    id: root

    enum Style {
        Neutral,
        Accent
    }

    required property string title
    property int style: DunmerePrimaryButton.Style.Neutral

    objectName: "primaryButton"
    text: title
    horizontalPadding: 18
    verticalPadding: 10

    contentItem: AppText {
        objectName: "title"
        text: root.title
        color: AppTheme.onAccent
        font.pixelSize: 14
        font.weight: Font.DemiBold
        horizontalAlignment: Text.AlignHCenter
        Accessible.ignored: true
    }
    background: ContinuousRectangle {
        objectName: "background"
        radius: AppTheme.cornerRadius
        color: root.style === DunmerePrimaryButton.Style.Accent ? AppTheme.accentOrangeDeep : AppTheme.accentOrange
    }
}
