pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Dunmere.Sweeper
import Dunmere.Theme

// One open folder: its children, one row each. A row acts like a plain button; which row a click means is settled when
// the button goes down, whatever an update does to the rows before it comes up again.
Rectangle {
    id: root

    required property int index
    required property RowListModel rows
    required property string folderName
    /// Its folder has not answered yet.
    required property bool isReading

    signal rowActivated(row: int)
    signal leftRequested
    signal rightRequested
    signal keyboardUsed

    /// Whether Tab stops here.
    required property bool isTabStop
    readonly property bool holdsKeyboard: list.activeFocus

    objectName: "sweeperColumn" + index
    implicitWidth: 280
    color: AppTheme.card

    function takeKeyboard() {
        list.forceActiveFocus();
        keyboardUsed();
    }

    /// From the column before: goes to the row that was last used here, or to the first.
    function enter() {
        if (list.count === 0)
            return;
        takeKeyboard();
        list.select(Math.max(0, rows.focusedRow));
    }

    /// Back from the column after: the folder that it shows is the selection again.
    function comeBack() {
        takeKeyboard();
        if (rows.focusedRow < 0)
            return;
        list.positionViewAtIndex(rows.focusedRow, ListView.Contain);
        list.activate(rows.focusedRow);
    }

    ListView {
        id: list
        objectName: "rowList"
        anchors.fill: parent
        clip: true
        reuseItems: true
        // Rows off the screen would be updated by every snapshot, and a row is created quickly when it scrolls in.
        cacheBuffer: 0
        boundsBehavior: Flickable.StopAtBounds
        activeFocusOnTab: activeFocus || root.isTabStop
        keyNavigationEnabled: false
        highlightFollowsCurrentItem: false
        model: root.rows
        // The rows are destroyed before the view when the pane is.
        currentIndex: root.rows ? root.rows.focusedRow : -1

        Accessible.role: Accessible.List
        Accessible.name: root.folderName
        Accessible.description: root.isReading ? qsTr("Reading…") : ""

        delegate: SweeperRow {
            width: list.width
            pressed: root.rows && index === root.rows.pressedRow && mouse.isOverPressed
            showsFocus: LastInput.isKeyboard && activeFocus
            onActivated: list.activate(index)
        }

        T.ScrollBar.vertical: ScrollBar {
            objectName: "columnScrollBar"
            z: 3
        }

        Keys.onPressed: event => {
            root.keyboardUsed();
            event.accepted = handleKey(event);
        }

        TypeSelect {
            id: typeSelect
        }

        function handleKey(event: KeyEvent): bool {
            if (event.modifiers & (Qt.ControlModifier | Qt.AltModifier | Qt.MetaModifier))
                return false;
            if (event.key === Qt.Key_Space && typeSelect.typed.length > 0)
                return selectTyped(event.text);
            return walk(event.key) || press(event) || selectTyped(event.text);
        }

        // Without a row to start from, Down goes to the first row and Up to the last.
        function walk(key: int): bool {
            const from = root.rows.focusedRow;
            const rowsPerPage = Math.max(1, Math.floor(height * count / contentHeight) - 1);
            switch (key) {
            case Qt.Key_Up:
                return select(from < 0 ? count - 1 : from - 1);
            case Qt.Key_Down:
                return select(from + 1);
            case Qt.Key_PageUp:
                return select(from - rowsPerPage);
            case Qt.Key_PageDown:
                return select(from + rowsPerPage);
            case Qt.Key_Home:
                return select(0);
            case Qt.Key_End:
                return select(count - 1);
            case Qt.Key_Left:
                root.leftRequested();
                return true;
            case Qt.Key_Right:
                openFolder();
                root.rightRequested();
                return true;
            }
            return false;
        }

        /// A row is a button too.
        function press(event: KeyEvent): bool {
            if (![Qt.Key_Space, Qt.Key_Return, Qt.Key_Enter].includes(event.key))
                return false;
            if (root.rows.focusedRow >= 0 && !event.isAutoRepeat)
                activate(root.rows.focusedRow);
            return true;
        }

        function selectTyped(text: string): bool {
            const row = typeSelect.find(root.rows, root.rows.focusedRow, text);
            return row >= 0 && select(row);
        }

        /// Goes to the row, or to the end nearest to it, and brings it into view. Always true.
        function select(row: int): bool {
            if (count === 0)
                return true;
            root.rows.focusedRow = Math.max(0, Math.min(count - 1, row));
            positionViewAtIndex(root.rows.focusedRow, ListView.Contain);
            if (!currentRow()?.selected)
                activate(root.rows.focusedRow);
            return true;
        }

        function openFolder() {
            if (currentRow()?.isDirectory && !currentRow().selected)
                activate(root.rows.focusedRow);
        }

        function activate(row: int) {
            root.rows.focusedRow = row;
            root.rowActivated(row);
        }

        function currentRow(): SweeperRow {
            return currentItem as SweeperRow;
        }

        // Above the rows, so that no row that comes, goes or moves under a pressed button matters to it. It scrolls with
        // them: what stands inside a ListView would otherwise stay where the view is.
        MouseArea {
            id: mouse
            objectName: "rowsMouse"
            parent: list.contentItem

            // Where the row was pressed and where the pointer is, both as the column stood in the window at that time:
            // the end of a sweep moves the whole column up, but not away from under a pointer that stands still.
            property real pressedTop: 0
            property real pressedBottom: 0
            readonly property bool isOverPressed: containsPress && isInPressed(mouseY)

            y: list.originY
            width: list.width
            height: Math.max(list.contentHeight, list.height)
            z: 2

            onPressed: event => {
                // A mouse never drags the rows; a finger does.
                preventStealing = event.source === Qt.MouseEventNotSynthesized;
                const row = list.indexAt(event.x, event.y + y);
                const item = list.itemAtIndex(row);
                pressedTop = item ? item.y - y + topInWindow() : 0;
                pressedBottom = item ? pressedTop + item.height : 0;
                root.rows.pressedRow = row;
            }
            onReleased: event => {
                const row = root.rows.pressedRow;
                const hit = containsMouse && isInPressed(event.y);
                root.rows.pressedRow = -1;
                if (row < 0 || !hit)
                    return;
                list.forceActiveFocus(Qt.MouseFocusReason);
                list.activate(row);
            }
            onCanceled: root.rows.pressedRow = -1

            function isInPressed(pointerY: real): bool {
                const windowY = pointerY + topInWindow();
                return windowY >= pressedTop && windowY < pressedBottom;
            }

            function topInWindow(): real {
                return list.mapToItem(null, 0, 0).y;
            }
        }
    }

    // After the column, not on it; it cannot be dragged.
    Divider {
        objectName: "columnDivider"
        anchors.left: parent.right
        height: parent.height
        color: AppTheme.border
    }

    Spinner {
        objectName: "columnSpinner"
        anchors.horizontalCenter: parent.horizontalCenter
        y: 12
        visible: root.isReading
    }

    FocusRing {
        objectName: "columnFocusRing"
        visible: LastInput.isKeyboard && list.activeFocus && list.currentIndex < 0
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
            // Assigning the same value would stop a scroll in progress.
            if (list.contentY !== wanted)
                list.contentY = wanted;
        }
    }
}
