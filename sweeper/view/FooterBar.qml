import QtQuick
import Dunmere.Sweeper
import Dunmere.Theme

// What is selected or going on, and what can be done with the selection.
Rectangle {
    id: root

    required property SweeperViewModel viewModel

    objectName: "footerBar"
    implicitHeight: Math.max(trashButton.height, status.height, revealButton.height) + 20
    color: AppTheme.canvas

    PlainButton {
        id: trashButton
        objectName: "trashButton"
        x: 16
        anchors.verticalCenter: parent.verticalCenter
        text: qsTr("Move to Trash")
        helpText: qsTr("Move selection to Trash")
        enabled: root.viewModel.canTrash
        dimsWhenDisabled: false
        onClicked: root.viewModel.requestTrash()

        contentItem: SymbolIcon {
            objectName: "trashIcon"
            systemImage: "trash"
            pixelSize: 18
            color: root.viewModel.canTrash ? AppTheme.primaryText : AppTheme.mutedLabel
        }
    }
    AppText {
        id: status
        objectName: "footerStatus"
        anchors.left: trashButton.right
        anchors.leftMargin: 16
        anchors.right: revealButton.left
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        text: root.viewModel.footerStatus
        color: AppTheme.secondaryText
        font.pixelSize: 12
        wrapMode: Text.Wrap
        maximumLineCount: 3
        elide: Text.ElideRight
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    PlainButton {
        id: revealButton

        readonly property color contentColor: root.viewModel.canReveal ? AppTheme.accentOrange : AppTheme.mutedLabel

        objectName: "revealButton"
        anchors.right: parent.right
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        text: qsTr("Reveal")
        helpText: qsTr("Show in Finder")
        enabled: root.viewModel.canReveal
        dimsWhenDisabled: false
        onClicked: root.viewModel.reveal()

        contentItem: Column {
            spacing: 2

            SymbolIcon {
                objectName: "revealIcon"
                anchors.horizontalCenter: parent.horizontalCenter
                systemImage: "folder"
                pixelSize: 18
                color: revealButton.contentColor
            }
            AppText {
                objectName: "revealLabel"
                anchors.horizontalCenter: parent.horizontalCenter
                text: revealButton.text
                color: revealButton.contentColor
                font.pixelSize: 10
                font.weight: Font.Medium
                Accessible.ignored: true
            }
        }
    }
}
