import QtQuick
import QtQuick.Templates as T
import Dunmere.Theme

// The narrow column that switches between the panes.
Rectangle {
    id: root

    required property bool freeSpaceSelected
    required property bool settingsSelected

    signal freeSpaceChosen
    signal settingsChosen
    signal drivesChosen

    objectName: "sidebar"
    color: AppTheme.canvas

    Item {
        anchors.fill: parent
        anchors.margins: 16
        anchors.leftMargin: 12
        anchors.rightMargin: 12

        Flickable {
            id: rowArea
            objectName: "sidebarRowArea"
            anchors.top: parent.top
            anchors.bottom: divider.top
            anchors.bottomMargin: 10
            width: parent.width
            contentHeight: rows.height
            boundsBehavior: Flickable.StopAtBounds
            interactive: contentHeight > height
            clip: interactive

            T.ScrollBar.vertical: ScrollBar {}

            Column {
                id: rows
                width: rowArea.width
                spacing: 4

                SidebarRow {
                    objectName: "freeSpaceRow"
                    width: parent.width
                    title: qsTr("Free Space")
                    systemImage: "rectangle.split.3x1"
                    isSelected: root.freeSpaceSelected
                    onClicked: root.freeSpaceChosen()
                }
                SidebarRow {
                    objectName: "settingsRow"
                    width: parent.width
                    title: qsTr("Settings")
                    systemImage: "slider.horizontal.3"
                    isSelected: root.settingsSelected
                    onClicked: root.settingsChosen()
                }
            }
        }
        Divider {
            id: divider
            objectName: "sidebarDivider"
            anchors.bottom: drivesButton.top
            anchors.bottomMargin: 10
            width: parent.width
        }
        PlainButton {
            id: drivesButton
            objectName: "drivesButton"
            anchors.bottom: parent.bottom
            width: parent.width
            horizontalPadding: 10
            verticalPadding: 8
            text: qsTr("Drives…")
            helpText: qsTr("Return to volume and folder picker")
            onClicked: root.drivesChosen()

            contentItem: SidebarLabel {
                title: drivesButton.text
                systemImage: "externaldrive"
            }
        }
    }
}
