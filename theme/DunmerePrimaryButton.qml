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
    titleColor: AppTheme.onAccent
    font.weight: Font.DemiBold
    horizontalPadding: 18
    verticalPadding: 10

    background: ContinuousRectangle {
        objectName: "background"
        radius: AppTheme.cornerRadius
        color: root.style === DunmerePrimaryButton.Style.Accent ? AppTheme.accentOrangeDeep : AppTheme.accentOrange
    }
}
