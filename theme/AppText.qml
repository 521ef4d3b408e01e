import QtQuick

// A text of the interface: never markup, a fixed line height for its size. `font.pixelSize` is the size in points.
Text {
    id: root

    /// Below the text.
    property int space: 0

    textFormat: Text.PlainText
    color: AppTheme.primaryText
    // Also for a text that begins with right-to-left letters.
    horizontalAlignment: Text.AlignLeft
    lineHeightMode: Text.FixedHeight
    lineHeight: AppTheme.lineHeight(font.pixelSize)
    font.pixelSize: 14

    // Qt applies a fixed line height only between lines: a taller font overhangs both edges equally.
    onContentSizeChanged: {
        const surplus = Math.ceil(contentHeight) - lineCount * lineHeight;
        topPadding = -Math.floor(surplus / 2);
        bottomPadding = space - Math.ceil(surplus / 2);
    }
}
