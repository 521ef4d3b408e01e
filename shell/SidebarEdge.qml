import QtQuick
import Dunmere.Theme

// The line between the sidebar and the panes. The pointer drags it. Tab skips it: F8 leads to it, the arrow keys move it,
// and F8, Return and Space lead back; Escape too, and undoes the move.
Splitter {
    id: root

    /// What stands after it.
    required property Item pane
    property Item cameFrom: null
    property real cameAt: 0

    objectName: "splitHandle"
    implicitWidth: 1
    z: 1

    Accessible.role: Accessible.Splitter
    Accessible.name: qsTr("Width of the sidebar")
    Accessible.description: "F8"

    Keys.onPressed: event => {
        if (event.key === Qt.Key_Escape)
            moveTo(cameAt);
        event.accepted = [Qt.Key_Escape, Qt.Key_Return, Qt.Key_Enter, Qt.Key_Space].includes(event.key);
        if (event.accepted)
            goBack();
    }

    Keys.onTabPressed: pane.nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
    Keys.onBacktabPressed: pane.nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)

    onActiveFocusChanged: cameAt = position

    function goBack() {
        // That item may be gone or disabled by now.
        focus = false;
        cameFrom?.forceActiveFocus();
        cameFrom = null;
    }

    Shortcut {
        sequence: "F8"
        onActivated: {
            if (root.activeFocus)
                return root.goBack();
            root.cameFrom = root.Window.activeFocusItem;
            root.forceActiveFocus();
        }
    }

    Divider {
        anchors.fill: parent
    }
    Rectangle {
        objectName: "splitFocusRing"
        anchors.fill: parent
        anchors.leftMargin: -2
        anchors.rightMargin: -2
        color: AppTheme.focusRing
        visible: LastInput.isKeyboard && root.activeFocus
    }
}
