import QtQuick
import QtQuick.Templates as T
import Dunmere.Theme

// Explains the one permission that matters to a sweep, and asks for its page in the system's settings.
Rectangle {
    id: root

    signal fullDiskAccessRequested

    readonly property int blockMaximumWidth: 520
    readonly property int blockPadding: 32
    readonly property int rowSpacing: 16
    readonly property int minimumGap: 12

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
            // The explanation takes as many lines as it needs beside the button, which keeps its size and its place.
            Item {
                objectName: "fullDiskAccessRow"
                width: parent.width
                height: Math.max(texts.height, openButton.height)

                Column {
                    id: texts
                    objectName: "fullDiskAccessTexts"
                    width: parent.width - openButton.width - root.minimumGap - 2 * root.rowSpacing
                    spacing: 4

                    AppText {
                        objectName: "fullDiskAccessHeading"
                        width: parent.width
                        text: qsTr("Full Disk Access")
                        font.pixelSize: 14
                        font.weight: Font.DemiBold
                        wrapMode: Text.Wrap
                        Accessible.role: Accessible.Heading
                        Accessible.name: text
                    }
                    AppText {
                        objectName: "fullDiskAccessExplanation"
                        width: parent.width
                        text: qsTr("Turn on for Dunmere if sweeps skip folders or Trash fails in protected locations.")
                        color: AppTheme.secondaryText
                        font.pixelSize: 13
                        wrapMode: Text.Wrap
                        Accessible.role: Accessible.StaticText
                        Accessible.name: text
                    }
                }
                DunmereSecondaryButton {
                    id: openButton
                    objectName: "openButton"
                    anchors.right: parent.right
                    title: qsTr("Open…")
                    onClicked: root.fullDiskAccessRequested()
                }
            }
        }
    }
}
