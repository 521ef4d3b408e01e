import QtQuick
import QtQuick.Templates as T
import Dunmere.Theme

// Explains the one permission that matters to a sweep, and asks for its page in the system's settings.
Rectangle {
    id: root

    signal fullDiskAccessRequested

    readonly property int blockMaximumWidth: 520
    readonly property int blockPadding: 32

    objectName: "settingsPane"
    color: AppTheme.canvas

    Flickable {
        id: scroller
        objectName: "settingsScroller"
        anchors.fill: parent
        contentHeight: block.height + 2 * root.blockPadding
        boundsBehavior: Flickable.StopAtBounds
        interactive: contentHeight > height
        clip: true

        T.ScrollBar.vertical: ScrollBar {}

        Column {
            id: block
            objectName: "settingsBlock"
            x: root.blockPadding
            y: root.blockPadding
            width: Math.min(root.blockMaximumWidth, scroller.width) - 2 * root.blockPadding
            spacing: 28

            AppText {
                objectName: "settingsTitle"
                text: qsTr("Settings")
                font.pixelSize: 28
                font.weight: Font.DemiBold
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }
            Divider {
                objectName: "settingsDivider"
                width: parent.width
                color: AppTheme.border
            }
            FullDiskAccessRow {
                width: parent.width
                onOpenRequested: root.fullDiskAccessRequested()
            }
        }
    }
}
