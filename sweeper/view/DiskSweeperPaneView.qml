pragma ComponentBehavior: Bound

import QtQuick
import Dunmere.Sweeper
import Dunmere.Theme

// The sweeper: its picker, or its browser. Lives as long as it is shown, and so does the sweep that `viewModel` holds.
Rectangle {
    id: root

    required property SweeperViewModel viewModel

    objectName: "diskSweeperPane"
    color: AppTheme.card

    Component.onCompleted: viewModel.appear()

    Loader {
        anchors.fill: parent
        active: !root.viewModel.browsing
        sourceComponent: VolumePicker {
            viewModel: root.viewModel
        }
    }
    Loader {
        anchors.fill: parent
        active: root.viewModel.browsing
        sourceComponent: BrowserChrome {
            viewModel: root.viewModel
        }
    }

    TrashConfirmation {
        viewModel: root.viewModel
    }
}
