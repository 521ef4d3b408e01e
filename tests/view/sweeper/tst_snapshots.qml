import QtQuick
import QtTest
import Dunmere.Sweeper
import Dunmere.SweeperTest

// What the user is doing survives every snapshot: a scan counts folder after folder, each larger than the one before, so
// that every snapshot sends another row to the top.
TestCase {
    id: testCase

    name: "Snapshots"
    when: windowShown
    visible: true
    width: 800
    height: 600

    property Item pane: null

    SweeperHarness {
        id: harness
    }
    Component {
        id: paneComponent

        DiskSweeperPaneView {
            width: 700
            height: 560
            viewModel: harness.viewModel
        }
    }

    function folderName(number: int): string {
        return "folder" + String(number).padStart(2, "0");
    }

    function init() {
        failOnWarning(/./);
        harness.restart();
        for (let number = 0; number < 60; ++number) {
            for (let file = 0; file < 30; ++file)
                harness.addFile("/root/" + folderName(number) + "/file" + file, number === 0 ? 1 : number * 1000000 + file);
        }
        pane = createTemporaryObject(paneComponent, testCase);
        harness.sweepFolder("/root");
        layOut();
    }

    function layOut() {
        findChild(pane, "columnRow").forceLayout();
        for (let column = 0; column < harness.viewModel.columns.rowCount(); ++column)
            rowList(column).forceLayout();
    }

    function column(index: int): Item {
        return findChild(pane, "sweeperColumn" + index);
    }

    function rowList(index: int): Item {
        return findChild(column(index), "rowList");
    }

    function scrolledBy(list: Item): real {
        return list.contentY - list.originY;
    }

    function nameAt(list: Item, y: real): string {
        return list.itemAtIndex(list.indexAt(10, list.contentY + y)).name;
    }

    function applySnapshots(count: int) {
        for (let done = 0; done < count; ++done) {
            verify(harness.applySnapshot());
            layOut();
        }
    }

    function test_everyOpenColumnStaysScrolledAsItWas() {
        harness.viewModel.selectRow(0, harness.rowOf(0, folderName(59)));
        layOut();
        rowList(0).contentY = 28 * 20 + 5;
        rowList(1).contentY = 28 * 3 + 9;
        for (let snapshot = 0; snapshot < 200; ++snapshot) {
            applySnapshots(1);
            compare(scrolledBy(rowList(0)), 28 * 20 + 5);
            compare(scrolledBy(rowList(1)), 28 * 3 + 9);
        }
        waitForRendering(pane);
        compare(scrolledBy(rowList(0)), 28 * 20 + 5);
        compare(nameAt(rowList(0), 0), nameAtOffset(rowList(0)), "and what stands there is what belongs there");
    }

    function nameAtOffset(list: Item): string {
        const rows = column(0).rows;
        return rows.data(rows.index(Math.floor(scrolledBy(list) / 28), 0), Qt.UserRole + 1);
    }

    function test_rowsThatComeOrGoAboveDoNotScroll() {
        const list = rowList(0);
        list.contentY = 28 * 20 + 5;
        for (let number = 0; number < 5; ++number)
            harness.removeEntry("/root/" + folderName(number));
        applySnapshots(1);
        compare(list.count, 55);
        compare(scrolledBy(list), 28 * 20 + 5);
        for (let number = 0; number < 7; ++number)
            harness.addFolder("/root/added" + number);
        applySnapshots(1);
        compare(list.count, 62);
        compare(scrolledBy(list), 28 * 20 + 5);
        compare(nameAt(list, 0), nameAtOffset(list));
    }

    function test_theSidewaysScrollStays() {
        harness.viewModel.selectRow(0, harness.rowOf(0, folderName(59)));
        pane.width = 400;
        layOut();
        const scroller = findChild(pane, "columnScroller");
        scroller.contentX = 77;
        applySnapshots(40);
        compare(scroller.contentX, 77);
    }

    function test_columnsStayTheSameItems() {
        harness.viewModel.selectRow(0, harness.rowOf(0, folderName(59)));
        layOut();
        const before = [column(0), column(1), column(0).rows, column(1).rows];
        applySnapshots(40);
        const after = [column(0), column(1), column(0).rows, column(1).rows];
        for (let index = 0; index < before.length; ++index)
            verify(before[index] === after[index]);
    }

    function test_anotherFolderStartsAtItsTopAndTheColumnBeforeItStaysScrolled() {
        harness.viewModel.selectRow(0, harness.rowOf(0, folderName(30)));
        layOut();
        rowList(0).contentY = 200;
        rowList(1).contentY = 100;
        harness.viewModel.selectRow(0, harness.rowOf(0, folderName(31)));
        layOut();
        compare(scrolledBy(rowList(1)), 0);
        compare(scrolledBy(rowList(0)), 200);
    }

    function test_theSelectionStaysWithItsFolder() {
        harness.viewModel.selectRow(0, harness.rowOf(0, folderName(20)));
        compare(harness.rowOf(0, folderName(20)), 20);
        applySnapshots(21 * 30);
        const row = harness.rowOf(0, folderName(20));
        compare(row, 0);
        rowList(0).positionViewAtIndex(row, ListView.Contain);
        layOut();
        const item = rowList(0).itemAtIndex(row);
        compare(item.name, folderName(20));
        verify(item.selected);
    }

    function test_theKeyboardStaysOnItsRow() {
        applySnapshots(5);
        const list = rowList(0);
        list.forceActiveFocus(Qt.TabFocusReason);
        for (let step = 0; step < 5; ++step)
            keyClick(Qt.Key_Down);
        const focused = list.currentItem.name;
        const rowBefore = column(0).rows.focusedRow;
        verify(list.currentItem.activeFocus);
        applySnapshots(30 * 12);
        verify(column(0).rows.focusedRow !== rowBefore, "the row has moved");
        compare(list.currentItem.name, focused);
        verify(list.currentItem.activeFocus);
        keyClick(Qt.Key_Space);
        compare(harness.viewModel.columns.rowCount(), 2);
        compare(harness.viewModel.footerStatus.startsWith("Indexing"), true);
        verify(findChild(pane, "sweeperColumn1").folderName === focused);
    }

    function test_theClickGoesToTheRowThatWasPressed() {
        applySnapshots(5);
        const list = rowList(0);
        const pressed = nameAt(list, 28 * 4 + 14);
        mousePress(list, 50, 28 * 4 + 14);
        applySnapshots(30 * 6);
        verify(nameAt(list, 28 * 4 + 14) !== pressed, "another row stands under the mouse");
        mouseRelease(list, 50, 28 * 4 + 14);
        compare(harness.viewModel.columns.rowCount(), 2);
        compare(findChild(pane, "sweeperColumn1").folderName, pressed);
    }

    function test_theClickGoesToTheRowThatWasPressedThoughTheSweepEndsAndMovesTheColumnUp() {
        applySnapshots(5);
        tryCompare(findChild(pane, "statusStripArea"), "height", 33);
        const list = rowList(0);
        const pressed = nameAt(list, 28 * 4 + 14);
        const place = list.mapToItem(pane, 50, 28 * 4 + 14);
        mousePress(pane, place.x, place.y);
        verify(harness.finishScan());
        layOut();
        compare(list.mapToItem(pane, 50, 28 * 4 + 14).y, place.y - 33, "the strip above the column is gone");
        mouseMove(pane, place.x, place.y + 1);
        mouseRelease(pane, place.x, place.y + 1);
        compare(harness.viewModel.columns.rowCount(), 2);
        compare(findChild(pane, "sweeperColumn1").folderName, pressed);
    }

    function test_aPressThatTheWheelScrollsAwayIsNoClick() {
        const list = rowList(0);
        mousePress(list, 50, 28 * 4 + 14);
        list.contentY += 28 * 6;
        mouseRelease(list, 50, 28 * 4 + 14);
        compare(harness.viewModel.columns.rowCount(), 1);
    }

    function test_aPressOnARowThatGoesAwayIsNoClick() {
        applySnapshots(5);
        const list = rowList(0);
        const pressed = nameAt(list, 28 * 4 + 14);
        mousePress(list, 50, 28 * 4 + 14);
        harness.removeEntry("/root/" + pressed);
        applySnapshots(1);
        mouseRelease(list, 50, 28 * 4 + 14);
        compare(harness.viewModel.columns.rowCount(), 1);
    }

    function test_scrolledToTheEndAShrunkenColumnShowsItsEnd() {
        const list = rowList(0);
        list.positionViewAtEnd();
        for (let number = 40; number < 60; ++number)
            harness.removeEntry("/root/" + folderName(number));
        applySnapshots(1);
        compare(list.count, 40);
        compare(scrolledBy(list), 40 * 28 - list.height);
    }

    function test_rowsThatMoveStayTheSameItems() {
        for (let number = 8; number < 60; ++number)
            harness.removeEntry("/root/" + folderName(number));
        applySnapshots(1);
        const list = rowList(0);
        const itemsByName = () => new Map(Array.from({
                length: 8
            }, (_, row) => [list.itemAtIndex(row).name, list.itemAtIndex(row)]));
        const before = itemsByName();
        const first = list.itemAtIndex(0).name;
        // The folders are counted in turn, and each is larger than those before it: in the end they stand reversed.
        while (harness.rowOf(0, folderName(7)) !== 0)
            applySnapshots(1);
        list.forceLayout();
        verify(list.itemAtIndex(0).name !== first, "the rows have moved");
        const after = itemsByName();
        for (const [name, item] of before)
            verify(after.get(name) === item, name);
    }

    function test_aScrollUnderWayGoesOn() {
        const list = rowList(0);
        const scrollTo = during => {
            list.contentY = list.originY;
            mouseWheel(list, 100, 100, 0, -120);
            verify(list.moving);
            during();
            tryVerify(() => !list.moving);
            return scrolledBy(list);
        };
        const undisturbed = scrollTo(() => {});
        verify(undisturbed > 20 && undisturbed < 28 * 20);
        compare(scrollTo(() => applySnapshots(60)), undisturbed);
    }

    function test_thePointerStaysOverWhatItIsOver() {
        const button = findChild(pane, "trashButton");
        mouseMove(button, button.width / 2, button.height / 2);
        tryVerify(() => button.hovered);
        harness.viewModel.selectRow(0, harness.rowOf(0, folderName(59)));
        for (let snapshot = 0; snapshot < 20; ++snapshot) {
            applySnapshots(1);
            waitForRendering(pane);
            verify(button.hovered);
        }
    }

    function test_aButtonTakesAClickAroundASnapshot() {
        const button = findChild(pane, "trashButton");
        mousePress(button);
        applySnapshots(5);
        verify(button.pressed);
        mouseRelease(button);
        verify(harness.viewModel.confirmTrash);
    }

    function test_theQuestionStaysAsItWasAsked() {
        harness.viewModel.selectRow(0, harness.rowOf(0, folderName(30)));
        harness.viewModel.requestTrash();
        const question = findChild(pane, "trashConfirmation");
        tryVerify(() => question.opened);
        const move = findChild(question.contentItem, "trashConfirmMove");
        mousePress(move);
        applySnapshots(31 * 30 + 5);
        compare(harness.rowOf(0, folderName(30)), 0);
        verify(question.opened);
        compare(harness.viewModel.trashConfirmTitle, "Move “folder30” to Trash?");
        mouseRelease(move);
        compare(harness.trashed, ["/root/folder30"]);
    }

    function test_aTrashLeavesEveryColumnScrolledAndOnItsRow() {
        pane.width = 400;
        applySnapshots(40 * 30);
        harness.viewModel.selectRow(0, harness.rowOf(0, folderName(30)));
        layOut();
        rowList(0).contentY = rowList(0).originY + 28 * 7 + 3;
        rowList(1).contentY = rowList(1).originY + 28 * 2 + 9;
        findChild(pane, "columnScroller").contentX = 60;
        column(0).rows.focusedRow = harness.rowOf(0, folderName(30));
        const shownAtTop = nameAt(rowList(0), 0);
        const items = [column(0), column(1), rowList(0).itemAtIndex(rowList(0).indexAt(10, rowList(0).contentY))];
        harness.viewModel.selectRow(1, 12);
        const gone = column(1).rows.data(column(1).rows.index(12, 0), Qt.UserRole + 1);
        harness.viewModel.confirmedTrash();
        layOut();
        compare(harness.trashed, ["/root/folder30/" + gone]);
        compare(rowList(1).count, 29);
        compare(scrolledBy(rowList(0)), 28 * 7 + 3);
        compare(scrolledBy(rowList(1)), 28 * 2 + 9);
        compare(findChild(pane, "columnScroller").contentX, 60);
        compare(nameAt(rowList(0), 0), shownAtTop);
        compare(column(0).rows.focusedRow, harness.rowOf(0, folderName(30)));
        verify(items[0] === column(0) && items[1] === column(1));
        verify(items[2] === rowList(0).itemAtIndex(rowList(0).indexAt(10, rowList(0).contentY)));
    }

    function test_aTrashedFolderTakesItsColumnAndMovesNoOther() {
        applySnapshots(40 * 30);
        const list = rowList(0);
        harness.viewModel.selectRow(0, harness.rowOf(0, folderName(25)));
        layOut();
        list.contentY = list.originY + 28 * 7 + 3;
        const above = nameAt(list, 0);
        harness.viewModel.confirmedTrash();
        layOut();
        compare(harness.viewModel.columns.rowCount(), 1);
        compare(list.count, 59);
        compare(scrolledBy(list), 28 * 7 + 3);
        compare(nameAt(list, 0), above);
    }
}
