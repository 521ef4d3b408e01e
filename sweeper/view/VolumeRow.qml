import QtQuick
import Dunmere.Theme

// One drive of the picker.
Item {
    id: root

    required property int index
    required property string name
    required property string detailText
    required property bool selected
    /// The list holds the keyboard: its selection stands out more.
    required property bool listFocused

    signal pressed

    // Icon and name share a baseline, and the larger icon is higher than the name, by this much with DejaVu. A constant,
    // so that the row has the same height with every font.
    readonly property int iconRise: 6

    objectName: "volumeRow" + index
    implicitHeight: 4 + Math.max(iconRise + texts.height, icon.height) + 4

    Accessible.role: Accessible.ListItem
    Accessible.name: name + ", " + detailText
    Accessible.selectable: true
    Accessible.selected: selected
    Accessible.focusable: true
    Accessible.onPressAction: root.pressed()

    Rectangle {
        objectName: "selectionHighlight"
        anchors.fill: parent
        anchors.leftMargin: 6
        anchors.rightMargin: 6
        radius: 5
        visible: root.selected
        color: root.listFocused ? AppTheme.focusedSelection : AppTheme.sidebarSelection
    }
    Item {
        id: iconFrame
        objectName: "iconFrame"
        x: 16
        width: 28
        height: parent.height

        SymbolIcon {
            id: icon
            objectName: "icon"
            y: 4 + root.iconRise + Math.round(nameLabel.baselineOffset - baselineOffset)
            anchors.horizontalCenter: parent.horizontalCenter
            systemImage: "internaldrive"
            pixelSize: 20
            color: AppTheme.secondaryText
        }
    }
    Column {
        id: texts
        anchors.left: iconFrame.right
        anchors.leftMargin: 12
        anchors.right: parent.right
        anchors.rightMargin: 16
        y: 4 + root.iconRise
        spacing: 2

        AppText {
            id: nameLabel
            objectName: "volumeName"
            width: parent.width
            text: root.name
            font.pixelSize: 14
            font.weight: Font.DemiBold
            elide: Text.ElideRight
            Accessible.ignored: true
        }
        AppText {
            objectName: "volumeDetail"
            width: parent.width
            text: root.detailText
            color: AppTheme.secondaryText
            font.pixelSize: 13
            elide: Text.ElideRight
            Accessible.ignored: true
        }
    }
}
