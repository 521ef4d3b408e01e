import QtQuick
import Dunmere.Sweeper
import Dunmere.Theme

// One file or folder of a column. The column takes the mouse and the keys for all its rows.
Item {
    id: root

    required property int index
    required property string name
    required property string sizeText
    required property string accessibleText
    required property bool isDirectory
    required property bool isSymbolicLink
    required property bool isCompleteZero
    required property bool selected
    required property bool pressed
    required property bool showsFocus

    signal activated

    /// Kept by the list for a later row; not on the screen, so not for a screen reader either.
    property bool pooled: false

    ListView.onPooled: pooled = true
    ListView.onReused: pooled = false

    objectName: "sweeperRow" + index
    implicitHeight: 6 + Math.max(sizeLabel.height, nameLabel.height) + 6
    opacity: pressed ? AppTheme.pressedOpacity : 1

    Accessible.ignored: pooled
    Accessible.role: Accessible.ListItem
    Accessible.name: accessibleText
    Accessible.selectable: true
    Accessible.selected: selected
    Accessible.focusable: true
    Accessible.onPressAction: root.activated()

    ContinuousRectangle {
        objectName: "rowBackground"
        anchors.fill: parent
        radius: 4
        color: AppTheme.accentOrange
        visible: root.selected
    }
    AppText {
        id: sizeLabel
        objectName: "rowSize"
        x: 10
        width: 88
        anchors.verticalCenter: parent.verticalCenter
        horizontalAlignment: Text.AlignRight
        text: root.sizeText
        color: root.selected ? Qt.alpha(AppTheme.onAccent, 0.95) : root.isCompleteZero ? AppTheme.completeZero : AppTheme.accentOrange
        font.family: SystemFonts.monospacedFamily
        font.pixelSize: 12
        font.weight: Font.Medium
        Accessible.ignored: true
    }
    AppText {
        id: nameLabel
        objectName: "rowName"
        anchors.left: sizeLabel.right
        anchors.leftMargin: 8
        anchors.right: parent.right
        anchors.rightMargin: root.isDirectory ? 10 + chevron.width + 16 : 10 + 8
        anchors.verticalCenter: parent.verticalCenter
        text: root.name
        color: root.selected ? AppTheme.onAccent : AppTheme.primaryText
        font.pixelSize: 13
        font.italic: root.isSymbolicLink
        maximumLineCount: 1
        elide: Text.ElideRight
        Accessible.ignored: true
    }
    SymbolIcon {
        id: chevron
        objectName: "rowChevron"
        anchors.right: parent.right
        anchors.rightMargin: 10
        anchors.verticalCenter: parent.verticalCenter
        visible: root.isDirectory
        systemImage: "chevron.right"
        pixelSize: 10
        weight: Font.DemiBold
        color: root.selected ? Qt.alpha(AppTheme.onAccent, 0.9) : AppTheme.mutedLabel
    }
    FocusRing {
        objectName: "rowFocusRing"
        anchors.margins: root.selected ? 2 : 0
        radius: 4
        border.color: root.selected ? AppTheme.onAccent : AppTheme.focusRing
        visible: root.showsFocus
    }
}
