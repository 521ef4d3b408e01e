import QtQuick
import Dunmere.Theme

// What Full Disk Access is good for, and the button that leads to it. The explanation takes as many lines as it needs
// beside the button, which keeps its size and its place at the top right.
Item {
    id: root

    signal openRequested

    readonly property int spacing: 16
    readonly property int minimumGap: 12

    objectName: "fullDiskAccessRow"
    implicitHeight: Math.max(texts.height, openButton.height)

    Column {
        id: texts
        objectName: "fullDiskAccessTexts"
        width: root.width - openButton.width - root.minimumGap - 2 * root.spacing
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
        anchors.top: parent.top
        anchors.right: parent.right
        title: qsTr("Open…")
        onClicked: root.openRequested()
    }
}
