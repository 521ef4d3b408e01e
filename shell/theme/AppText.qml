import QtQuick

// A text of the interface: never markup, a fixed line height for its size. `font.pixelSize` is the size in points.
Text {
    textFormat: Text.PlainText
    color: AppTheme.primaryText
    // Also for a text that begins with right-to-left letters.
    horizontalAlignment: Text.AlignLeft
    lineHeightMode: Text.FixedHeight
    lineHeight: AppTheme.lineHeight(font.pixelSize)
    font.pixelSize: 14
}
