pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Dunmere.Sweeper
import Dunmere.Theme

// One open folder: its children, one row each. A row acts like a plain button; which row a click means is settled when
// the button goes down, whatever an update does to the rows before it comes up again.
Rectangle {
    id: root

    required property RowListModel rows
    required property string folderName

    signal rowActivated(row: int)
    signal leftRequested
    signal rightRequested
    signal keyboardUsed

    /// Whether the keyboard was used last, not the mouse: only then the focused row is shown.
    property bool keyboardInUse: false

    implicitWidth: 280
    color: AppTheme.card

    function takeKeyboard() {
        list.forceActiveFocus(Qt.TabFocusReason);
        keyboardUsed();
    }

    ListView {
        id: list
        objectName: "rowList"
        anchors.fill: parent
        clip: true
        reuseItems: true
        // Rows off the screen would take part in every snapshot; one that scrolls in is made in no time.
        cacheBuffer: 0
        boundsBehavior: Flickable.StopAtBounds
        activeFocusOnTab: true
        keyNavigationEnabled: false
        highlightFollowsCurrentItem: false
        model: root.rows
        // The rows go before the view when the whole pane goes.
        currentIndex: root.rows ? root.rows.focusedRow : -1

        Accessible.role: Accessible.List
        Accessible.name: root.folderName

        delegate: SweeperRow {
            width: list.width
            pressed: root.rows && index === root.rows.pressedRow && mouse.isOverPressed
            showsFocus: activeFocus && root.keyboardInUse
            onActivated: root.rowActivated(index)
        }

        T.ScrollBar.vertical: ScrollBar {
            objectName: "columnScrollBar"
            z: 3
        }

        onActiveFocusChanged: {
            if (!activeFocus || mouse.takesFocus)
                return;
            root.keyboardInUse = true;
            if (root.rows.focusedRow < 0)
                focusRow(firstVisibleRow());
        }

        Keys.onPressed: event => {
            root.keyboardInUse = true;
            root.keyboardUsed();
            event.accepted = handleKey(event.key, event.isAutoRepeat);
        }

        function handleKey(key: int, isAutoRepeat: bool): bool {
            const rowsPerPage = Math.max(1, Math.floor(height * count / contentHeight) - 1);
            switch (key) {
            case Qt.Key_Up:
                return focusRow(root.rows.focusedRow < 0 ? count - 1 : root.rows.focusedRow - 1);
            case Qt.Key_Down:
                return focusRow(root.rows.focusedRow + 1);
            case Qt.Key_PageUp:
                return focusRow(root.rows.focusedRow - rowsPerPage);
            case Qt.Key_PageDown:
                return focusRow(root.rows.focusedRow + rowsPerPage);
            case Qt.Key_Home:
                return focusRow(0);
            case Qt.Key_End:
                return focusRow(count - 1);
            case Qt.Key_Left:
                root.leftRequested();
                return true;
            case Qt.Key_Right:
                root.rightRequested();
                return true;
            case Qt.Key_Space:
            case Qt.Key_Return:
            case Qt.Key_Enter:
                if (root.rows.focusedRow >= 0 && !isAutoRepeat)
                    root.rowActivated(root.rows.focusedRow);
                return true;
            }
            return false;
        }

        function focusRow(row: int): bool {
            if (count > 0) {
                root.rows.focusedRow = Math.max(0, Math.min(count - 1, row));
                positionViewAtIndex(root.rows.focusedRow, ListView.Contain);
            }
            return true;
        }

        function firstVisibleRow(): int {
            return Math.max(0, indexAt(0, contentY + 1));
        }

        // Above the rows, so that no row that comes, goes or moves under a pressed button matters to it. It scrolls with
        // them: what stands inside a ListView would otherwise stay where the view is.
        MouseArea {
            id: mouse
            objectName: "rowsMouse"
            parent: list.contentItem

            property bool takesFocus: false
            property real pressedTop: 0
            property real pressedBottom: 0
            readonly property bool isOverPressed: containsPress && mouseY >= pressedTop && mouseY < pressedBottom

            y: list.originY
            width: list.width
            height: Math.max(list.contentHeight, list.height)
            z: 2

            onPressed: event => {
                // A mouse never drags the rows; a finger does.
                preventStealing = event.source === Qt.MouseEventNotSynthesized;
                root.keyboardInUse = false;
                const row = list.indexAt(event.x, event.y + y);
                const item = list.itemAtIndex(row);
                pressedTop = item ? item.y - y : 0;
                pressedBottom = item ? pressedTop + item.height : 0;
                root.rows.pressedRow = row;
            }
            onReleased: {
                const row = root.rows.pressedRow;
                const hit = isOverPressed;
                root.rows.pressedRow = -1;
                if (row < 0 || !hit)
                    return;
                root.rows.focusedRow = row;
                takesFocus = true;
                list.forceActiveFocus(Qt.MouseFocusReason);
                takesFocus = false;
                root.rowActivated(row);
            }
            onCanceled: root.rows.pressedRow = -1
        }
    }

    // Rows that come or go above the visible ones make a ListView shift its origin or its content: the column stays
    // scrolled by as much as it was.
    Connections {
        id: scrollKeeper

        property real offset: 0

        target: root.rows

        function onAboutToUpdate() {
            scrollKeeper.offset = list.contentY - list.originY;
        }

        function onUpdated() {
            list.forceLayout();
            const most = Math.max(0, list.contentHeight - list.height);
            const wanted = list.originY + Math.min(scrollKeeper.offset, most);
            // Setting the same place again would stop a scroll under way.
            if (list.contentY !== wanted)
                list.contentY = wanted;
        }
    }
}
