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

    FocusScope {
        id: screens
        anchors.fill: parent

        VolumePicker {
            id: picker
            anchors.fill: parent
            visible: !root.viewModel.browsing
            viewModel: root.viewModel
        }
        BrowserChrome {
            id: browser
            anchors.fill: parent
            visible: root.viewModel.browsing
            viewModel: root.viewModel
        }

        /// Back to the item that had it before the question; to the columns when that is disabled by now.
        function takeKeyboardBack() {
            const holder = Window.activeFocusItem;
            if (holder && holder !== Window.contentItem)
                return;
            forceActiveFocus();
            if (Window.activeFocusItem === screens)
                browser.takeKeyboard();
        }
    }

    TrashConfirmation {
        viewModel: root.viewModel
        onClosed: screens.takeKeyboardBack()
    }

    Connections {
        target: root.viewModel

        // A sweep starts in the picker only. The sidebar leads back there, and then keeps the keyboard.
        function onBrowsingChanged() {
            if (root.viewModel.browsing)
                browser.takeKeyboard();
            else if (screens.activeFocus)
                picker.takeKeyboard();
        }
    }
}
