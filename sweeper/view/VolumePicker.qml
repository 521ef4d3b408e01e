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

    function takeKeyboard() {
        list.forceActiveFocus();
    }

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
        Accessible.ignored: !visible
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
        Keys.onPressed: event => event.accepted = handleKey(event)

        TypeSelect {
            id: typeSelect
        }

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

        // Without a selection, Down goes to the first row and Up to the last.
        function handleKey(event: KeyEvent): bool {
            if (event.modifiers & (Qt.ControlModifier | Qt.AltModifier | Qt.MetaModifier))
                return false;
            switch (event.key) {
            case Qt.Key_Up:
                return goTo(currentIndex < 0 ? count - 1 : currentIndex - 1);
            case Qt.Key_Down:
                return goTo(currentIndex + 1);
            case Qt.Key_Home:
                return goTo(0);
            case Qt.Key_End:
                return goTo(count - 1);
            }
            const row = typeSelect.find(model, currentIndex, event.text);
            return row >= 0 && goTo(row);
        }

        /// Selects the row, or the end nearest to it, and brings it into view. Always true.
        function goTo(row: int): bool {
            if (count === 0)
                return true;
            const nearest = Math.max(0, Math.min(count - 1, row));
            root.viewModel.selectVolume(nearest);
            positionViewAtIndex(nearest, ListView.Contain);
            return true;
        }
    }

    // A selected drive shows by its colour that the list holds the keyboard; without one the list does.
    FocusRing {
        objectName: "volumeListFocusRing"
        anchors.fill: list
        visible: LastInput.isKeyboard && list.activeFocus && root.viewModel.selectedVolume < 0
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

    // What to do when sizes stay at zero.
    AppText {
        id: hint
        objectName: "permissionHint"
        x: 16
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 12
        width: parent.width - 32
        text: qsTr("Direct install: sweeps use normal macOS file permissions (like Finder). If sizes stay at zero for another user’s home or protected areas, enable Full Disk Access for Dunmere in System Settings.")
        color: AppTheme.mutedLabel
        font.pixelSize: 11
        wrapMode: Text.Wrap
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
}
