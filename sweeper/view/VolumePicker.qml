pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Dunmere.Sweeper
import Dunmere.Theme

// Where a sweep starts: a drive from the list, or a folder.
Item {
    id: root

    required property SweeperViewModel viewModel

    objectName: "volumePicker"

    AppText {
        id: errorText
        objectName: "loadErrorText"
        x: 16
        y: 8
        width: parent.width - 32
        visible: text.length > 0
        text: root.viewModel.loadErrorText
        color: AppTheme.errorRed
        opacity: AppTheme.errorOpacity
        font.pixelSize: 13
        wrapMode: Text.Wrap
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    ListView {
        id: list
        objectName: "volumeList"
        anchors.top: errorText.visible ? errorText.bottom : parent.top
        anchors.bottom: divider.top
        width: parent.width
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        activeFocusOnTab: true
        keyNavigationEnabled: false
        highlightFollowsCurrentItem: false
        model: root.viewModel.volumes
        currentIndex: root.viewModel.selectedVolume

        Accessible.role: Accessible.List
        Accessible.name: qsTr("Drives")
        Keys.onUpPressed: list.moveSelection(-1)
        Keys.onDownPressed: list.moveSelection(1)

        delegate: VolumeRow {
            width: list.width
            selected: index === root.viewModel.selectedVolume
            listFocused: list.activeFocus
            onPressed: list.select(index)
        }

        T.ScrollBar.vertical: ScrollBar {}

        // Above the rows, down to the list's end: a press beside the rows selects none.
        MouseArea {
            objectName: "volumeListMouse"
            parent: list.contentItem
            y: list.originY
            width: list.width
            height: Math.max(list.contentHeight, list.height)
            z: 2
            preventStealing: true
            onPressed: mouse => list.select(list.indexAt(mouse.x, mouse.y + y))
        }

        function select(row: int) {
            forceActiveFocus(Qt.MouseFocusReason);
            root.viewModel.selectVolume(row);
        }

        // Without a selection an arrow key takes the end that it comes from.
        function moveSelection(step: int) {
            if (count === 0)
                return;
            const from = currentIndex >= 0 ? currentIndex : step > 0 ? -1 : count;
            const row = Math.max(0, Math.min(count - 1, from + step));
            root.viewModel.selectVolume(row);
            positionViewAtIndex(row, ListView.Contain);
        }
    }

    // A selected drive shows by its colour that the list holds the keyboard; without one the list does.
    Rectangle {
        objectName: "volumeListFocusRing"
        anchors.fill: list
        color: "transparent"
        border.width: 2
        border.color: AppTheme.focusRing
        visible: list.activeFocus && root.viewModel.selectedVolume < 0
    }

    Divider {
        id: divider
        anchors.bottom: buttonBar.top
        width: parent.width
    }

    Rectangle {
        id: buttonBar
        objectName: "buttonBar"
        anchors.bottom: hint.top
        width: parent.width
        height: buttons.height + 28
        color: AppTheme.canvas

        Row {
            id: buttons
            objectName: "buttons"
            anchors.centerIn: parent
            spacing: 12

            DunmereSecondaryButton {
                objectName: "openFolderButton"
                anchors.verticalCenter: parent.verticalCenter
                title: qsTr("Open Folder…")
                onClicked: root.viewModel.openFolderSweep()
            }
            DunmerePrimaryButton {
                objectName: "sweepSelectedDriveButton"
                anchors.verticalCenter: parent.verticalCenter
                title: qsTr("Sweep Selected Drive…")
                enabled: root.viewModel.canSweepSelected
                onClicked: root.viewModel.startSweepSelectedVolume()
            }
        }
    }

    PermissionHint {
        id: hint
        x: 16
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 12
        width: parent.width - 32
    }
}
