pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Dunmere.Shell
import Dunmere.Sweeper
import Dunmere.Theme

// What the window shows: the sidebar, and beside it one pane; without a selection it is the sweeper's.
Rectangle {
    id: root

    required property ContentModel content

    readonly property int minimumContentWidth: 960
    readonly property int minimumContentHeight: 560

    objectName: "contentView"
    color: AppTheme.canvas

    T.SplitView {
        id: split
        objectName: "split"
        anchors.fill: parent

        handle: SidebarEdge {
            pane: detail
            position: sidebar.T.SplitView.preferredWidth
            minimum: sidebar.T.SplitView.minimumWidth
            maximum: sidebar.T.SplitView.maximumWidth
            onMoveRequested: to => sidebar.T.SplitView.preferredWidth = to
            // One point is hard to hit: the pointer may be a few beside it.
            containmentMask: Item {
                x: -3
                width: 7
                height: split.height
            }
        }

        Sidebar {
            id: sidebar
            T.SplitView.minimumWidth: 200
            T.SplitView.preferredWidth: 220
            T.SplitView.maximumWidth: 260
            freeSpaceSelected: root.content.freeSpaceSelected
            settingsSelected: root.content.settingsSelected
            onFreeSpaceChosen: root.content.selectFreeSpace()
            onSettingsChosen: root.content.selectSettings()
            onDrivesChosen: root.content.goToDrives()
        }

        Item {
            id: detail
            objectName: "detail"
            T.SplitView.fillWidth: true

            // One pane at a time; a pane that comes back is a new one.
            Repeater {
                model: root.content.settingsSelected ? 0 : 1

                DiskSweeperPaneView {
                    anchors.fill: detail
                    viewModel: root.content.pane
                }
            }
            Repeater {
                model: root.content.settingsSelected ? 1 : 0

                SettingsPane {
                    anchors.fill: detail
                    onFullDiskAccessRequested: root.content.openFullDiskAccess()
                }
            }
        }
    }
}
