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

    VolumePicker {
        anchors.fill: parent
        visible: !root.viewModel.browsing
        viewModel: root.viewModel
    }
    BrowserChrome {
        anchors.fill: parent
        visible: root.viewModel.browsing
        viewModel: root.viewModel
    }

    TrashConfirmation {
        viewModel: root.viewModel
    }
}
