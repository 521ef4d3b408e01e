import QtQuick
import QtQuick.Templates as T

// The tooltip of the item it is declared in; `visible` is bound to that item's hover.
T.ToolTip {
    id: root

    x: 0
    y: parent ? parent.height + 4 : 0
    implicitWidth: Math.ceil(implicitContentWidth) + leftPadding + rightPadding
    implicitHeight: Math.ceil(implicitContentHeight) + topPadding + bottomPadding
    margins: 6
    horizontalPadding: 8
    verticalPadding: 4
    delay: 1000
    closePolicy: T.Popup.NoAutoClose

    contentItem: AppText {
        objectName: "helpTipText"
        text: root.text
        font.pixelSize: 11
        Accessible.ignored: true
    }
    background: Rectangle {
        color: AppTheme.card
        border.color: AppTheme.border
        radius: 4
    }
}
