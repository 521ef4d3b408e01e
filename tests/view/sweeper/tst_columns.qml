import QtQuick
import QtTest
import Dunmere.Sweeper
import Dunmere.Theme
import Dunmere.SweeperTest

TestCase {
    id: testCase

    name: "Columns"
    when: windowShown
    visible: true
    width: 1000
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

    function init() {
        failOnWarning(/./);
        harness.restart();
        // The scan counts Movies last: until then it is a folder of no known size.
        harness.addFolder("/root/Empty");
        harness.addFile("/root/notes.txt", 900);
        harness.addFile("/root/nothing.txt", 0);
        harness.addLink("/root/alias", "/root/notes.txt");
        harness.addFile("/root/Music/song.mp3", 5500000);
        harness.addFile("/root/Movies/old/first.mov", 100000000);
        harness.addFile("/root/Movies/new/second.mov", 900000000);
        pane = createTemporaryObject(paneComponent, testCase);
        waitForRendering(pane);
    }

    function sweep() {
        harness.sweepFolder("/root");
        verify(harness.finishScan());
        forceLayout(0);
    }

    function forceLayout(column: int) {
        item("columnRow").forceLayout();
        findChild(item("sweeperColumn" + column), "rowList").forceLayout();
    }

    function item(name: string): Item {
        const found = findChild(pane, name);
        verify(found, "no item is named " + name);
        return found;
    }

    /// The row of that name in an open column.
    function row(column: int, name: string): Item {
        forceLayout(column);
        const index = harness.rowOf(column, name);
        verify(index >= 0, "no row is named " + name);
        const found = findChild(item("sweeperColumn" + column), "sweeperRow" + index);
        verify(found);
        compare(found.name, name);
        return found;
    }

    function box(inner: Item, outer: Item): rect {
        return inner.mapToItem(outer, Qt.rect(0, 0, inner.width, inner.height));
    }

    function openColumns(): int {
        return harness.viewModel.columns.rowCount();
    }

    function test_geometry() {
        sweep();
        mouseClick(row(0, "Movies"));
        mouseClick(row(1, "new"));
        compare(openColumns(), 3);
        forceLayout(2);
        const area = item("columnArea");
        for (let index = 0; index < 3; ++index) {
            const column = item("sweeperColumn" + index);
            compare(column.width, 280);
            compare(box(column, item("columnRow")).x, index * 281);
            compare(box(column, area).y, 0);
            compare(String(column.color), "#ffffff");
            const divider = findChild(column, "columnDivider");
            compare(divider.width, 1);
            compare(divider.height, column.height);
            compare(box(divider, column).x, 280);
            compare(String(divider.color), "#e6e6e6");
        }
        compare(String(area.color), "#ffffff");
    }

    function test_rowLook() {
        sweep();
        const folder = row(0, "Movies");
        const size = findChild(folder, "rowSize");
        const name = findChild(folder, "rowName");
        const chevron = findChild(folder, "rowChevron");
        const background = findChild(folder, "rowBackground");
        verify(background instanceof ContinuousRectangle);
        const list = findChild(item("sweeperColumn0"), "rowList");

        compare(folder.width, 280);
        compare(folder.height, 28);
        compare(size.x, 10);
        compare(size.width, 88);
        compare(size.horizontalAlignment, Text.AlignRight);
        compare(size.font.pixelSize, 12);
        compare(size.font.weight, Font.Medium);
        compare(size.font.family, SystemFonts.monospacedFamily);
        compare(name.x, 10 + 88 + 8);
        compare(name.font.pixelSize, 13);
        compare(name.font.weight, Font.Normal);
        compare(name.maximumLineCount, 1);
        compare(name.elide, Text.ElideRight);
        compare(name.y, 6);
        compare(name.height, 16);
        compare(chevron.systemImage, "chevron.right");
        compare(chevron.pixelSize, 10);
        compare(chevron.weight, Font.DemiBold);
        compare(chevron.x + chevron.width, 270);
        compare(background.radius, 4);
        compare(background.width, 280);
        compare(background.height, 28);
        compare(list.spacing, 0);
        compare(row(0, "Music").y - folder.y, 28);
    }

    function test_kindsAreToldApartByChevronAndSlant() {
        sweep();
        verify(findChild(row(0, "Movies"), "rowChevron").visible);
        verify(!findChild(row(0, "notes.txt"), "rowChevron").visible);
        compare(findChild(row(0, "alias"), "rowName").font.italic, true);
        compare(findChild(row(0, "notes.txt"), "rowName").font.italic, false);
        compare(findChild(row(0, "Movies"), "rowName").font.italic, false);
    }

    function test_rowsAreInOrderOfSize() {
        sweep();
        compare([0, 1, 2].map(index => findChild(item("sweeperColumn0"), "sweeperRow" + index).name).join(), "Movies,Music,alias");
        compare(row(0, "Movies").sizeText, "1 GB");
        compare(row(0, "Music").sizeText, "5.5 MB");
        compare(row(0, "nothing.txt").sizeText, "Zero KB");
    }

    function test_sizeColours() {
        sweep();
        const colour = name => String(findChild(row(0, name), "rowSize").color);
        compare(colour("notes.txt"), "#f05a28");
        compare(colour("Movies"), "#f05a28");
        compare(colour("nothing.txt"), "#338c59");
        compare(colour("Empty"), "#338c59");
    }

    function test_aFolderOfNoKnownSizeIsOrangeUntilTheScanEnds() {
        harness.sweepFolder("/root");
        forceLayout(0);
        const size = findChild(row(0, "Empty"), "rowSize");
        compare(size.text, "Zero KB+");
        compare(String(size.color), "#f05a28");
        compare(String(findChild(row(0, "nothing.txt"), "rowSize").color), "#338c59");
        harness.finishScan();
        compare(findChild(row(0, "Empty"), "rowSize").text, "Zero KB");
        compare(String(findChild(row(0, "Empty"), "rowSize").color), "#338c59");
    }

    function test_selectedRowColours() {
        sweep();
        mouseClick(row(0, "Movies"));
        const selected = row(0, "Movies");
        compare(String(findChild(selected, "rowBackground").color), "#f05a28");
        compare(String(findChild(selected, "rowName").color), "#ffffff");
        const size = findChild(selected, "rowSize").color;
        fuzzyCompare(size.a, 0.95, 0.005);
        compare([size.r, size.g, size.b], [1, 1, 1]);
        const chevron = findChild(selected, "rowChevron").color;
        fuzzyCompare(chevron.a, 0.9, 0.005);
        compare([chevron.r, chevron.g, chevron.b], [1, 1, 1]);

        const other = row(0, "Music");
        verify(!findChild(other, "rowBackground").visible);
        compare(String(findChild(other, "rowName").color), "#000000");
        compare(String(findChild(other, "rowChevron").color), "#8c8c8c");
    }

    function test_theSelectedRowIsDrawnOrangeToItsEdges() {
        sweep();
        mouseClick(row(0, "Movies"));
        waitForRendering(pane);
        const place = box(row(0, "Movies"), pane);
        const image = grabImage(pane);
        compare(String(image.pixel(place.x + 4, place.y + 14)), "#f05a28");
        compare(String(image.pixel(place.x + 275, place.y + 1)), "#f05a28");
        compare(String(image.pixel(place.x + 4, place.y + 28 + 14)), "#ffffff");
    }

    function test_aClickAnywhereInTheRowOpensTheFolder() {
        sweep();
        mouseClick(row(0, "Movies"), 278, 1);
        compare(openColumns(), 2);
        compare(harness.rowOf(1, "new"), 0);
        verify(row(0, "Movies").selected);
    }

    function test_aClickOnAFileEndsThePathThere() {
        sweep();
        mouseClick(row(0, "Movies"));
        mouseClick(row(1, "new"));
        mouseClick(row(0, "notes.txt"));
        compare(openColumns(), 1);
        verify(row(0, "notes.txt").selected);
        verify(!row(0, "Movies").selected);
    }

    function test_aPressThatEndsElsewhereIsNoClick() {
        sweep();
        const list = findChild(item("sweeperColumn0"), "rowList");
        const movies = row(0, "Movies");
        mousePress(list, 100, movies.y + 14);
        compare(movies.opacity, 0.75);
        mouseMove(list, 100, movies.y + 28 + 14);
        compare(movies.opacity, 1);
        mouseRelease(list, 100, movies.y + 28 + 14);
        compare(openColumns(), 1);
    }

    function test_aDraggedMouseDoesNotScrollTheColumn() {
        harness.addFiles("/root/Movies", 100);
        sweep();
        mouseClick(row(0, "Movies"));
        forceLayout(1);
        const list = findChild(item("sweeperColumn1"), "rowList");
        list.contentY = 200;
        mouseDrag(list, 100, 300, 0, -150);
        compare(list.contentY, 200);
    }

    function test_theWheelScrollsTheColumnUnderIt() {
        harness.addFiles("/root/Movies", 100);
        sweep();
        mouseClick(row(0, "Movies"));
        forceLayout(1);
        const list = findChild(item("sweeperColumn1"), "rowList");
        mouseWheel(list, 100, 100, 0, -240);
        tryVerify(() => list.contentY > 0);
        compare(item("columnScroller").contentX, 0);
        verify(findChild(list, "columnScrollBar").visible);
        verify(!findChild(item("sweeperColumn0"), "columnScrollBar").visible);
    }

    function test_aClickInAScrolledColumnMeansTheRowUnderThePointer() {
        harness.addFiles("/root/Movies", 100);
        sweep();
        mouseClick(row(0, "Movies"));
        forceLayout(1);
        const list = findChild(item("sweeperColumn1"), "rowList");
        mouseWheel(list, 100, 100, 0, -480);
        tryVerify(() => list.contentY > 100);
        tryVerify(() => !list.moving);
        const clicked = list.itemAt(100, list.contentY + 200);
        verify(clicked.index > 7, "the column is not scrolled");
        mouseClick(list, 100, 200);
        verify(clicked.selected);
        verify(harness.viewModel.footerStatus.startsWith(clicked.name + " / "));
    }

    function test_theAreaScrollsSidewaysWhenColumnsOverflowAndNeverByItself() {
        sweep();
        const scroller = item("columnScroller");
        verify(!item("columnAreaScrollBar").visible);
        mouseClick(row(0, "Movies"));
        mouseClick(row(1, "new"));
        waitForRendering(pane);
        compare(scroller.contentWidth, 3 * 281);
        compare(scroller.contentX, 0);
        verify(item("columnAreaScrollBar").visible);
        mouseWheel(item("columnArea"), 350, 100, -240, 0);
        tryVerify(() => scroller.contentX > 0);
    }

    function test_shiftAndTheWheelScrollSideways() {
        sweep();
        mouseClick(row(0, "Movies"));
        mouseClick(row(1, "new"));
        forceLayout(2);
        const scroller = item("columnScroller");
        mouseWheel(item("columnArea"), 350, 100, 0, -120, Qt.NoButton, Qt.ShiftModifier);
        compare(scroller.contentX, 56);
        mouseWheel(item("columnArea"), 350, 100, 0, -1200, Qt.NoButton, Qt.ShiftModifier);
        compare(scroller.contentX, 3 * 281 - 700);
        mouseWheel(item("columnArea"), 350, 100, 0, 2400, Qt.NoButton, Qt.ShiftModifier);
        compare(scroller.contentX, 0);
    }

    function test_arrowKeysWalkTheRowsAndSpaceOpensAFolder() {
        sweep();
        mouseClick(row(0, "Movies"));
        const list = findChild(item("sweeperColumn0"), "rowList");
        verify(list.activeFocus);
        verify(!findChild(row(0, "Movies"), "rowFocusRing").visible, "the mouse shows no ring");
        keyClick(Qt.Key_Down);
        verify(findChild(row(0, "Music"), "rowFocusRing").visible);
        keyClick(Qt.Key_Space);
        verify(row(0, "Music").selected);
        compare(harness.rowOf(1, "song.mp3"), 0);
        keyClick(Qt.Key_Right);
        verify(findChild(item("sweeperColumn1"), "rowList").activeFocus);
        keyClick(Qt.Key_Return);
        verify(row(1, "song.mp3").selected);
        keyClick(Qt.Key_Left);
        verify(list.activeFocus);
        keyClick(Qt.Key_End);
        compare(item("sweeperColumn0").rows.focusedRow, list.count - 1);
        keyClick(Qt.Key_Home);
        compare(item("sweeperColumn0").rows.focusedRow, 0);
    }

    function test_pageKeysWalkByPages() {
        harness.addFiles("/root/Movies", 100);
        sweep();
        mouseClick(row(0, "Movies"));
        keyClick(Qt.Key_Right);
        const list = findChild(item("sweeperColumn1"), "rowList");
        keyClick(Qt.Key_Home);
        keyClick(Qt.Key_PageDown);
        compare(item("sweeperColumn1").rows.focusedRow, Math.floor(list.height / 28) - 1);
        keyClick(Qt.Key_PageUp);
        compare(item("sweeperColumn1").rows.focusedRow, 0);
    }

    function test_theKeyboardBringsAHiddenColumnIntoView() {
        sweep();
        mouseClick(row(0, "Movies"));
        mouseClick(row(1, "new"));
        forceLayout(2);
        compare(item("columnScroller").contentX, 0);
        keyClick(Qt.Key_Right);
        compare(item("columnScroller").contentX, 2 * 281 + 281 - 700);
        keyClick(Qt.Key_Left);
        keyClick(Qt.Key_Left);
        compare(item("columnScroller").contentX, 0);
    }

    function test_namesAreBytesShownSafely() {
        harness.addFileOfBytes("/root", "a\n<b>x", 2000000);
        sweep();
        const label = findChild(item("sweeperColumn0"), "sweeperRow2");
        compare(label.name, "a[U+000A]<b>x");
        compare(findChild(label, "rowName").textFormat, Text.PlainText);
    }

    function test_aLongNameIsCutBeforeTheChevron() {
        harness.addFile("/root/" + "n".repeat(200) + "/x", 2000000000);
        sweep();
        const longRow = findChild(item("sweeperColumn0"), "sweeperRow0");
        const name = findChild(longRow, "rowName");
        verify(name.truncated);
        verify(name.x + name.width <= findChild(longRow, "rowChevron").x - 8);
        compare(name.lineCount, 1);
    }

    function test_rowsTellAssistiveTechnologyWhatTheyAre() {
        harness.sweepFolder("/root");
        compare(row(0, "Empty").Accessible.name, "Empty, folder, at least Zero KB");
        harness.finishScan();
        compare(row(0, "Movies").Accessible.name, "Movies, folder, 1 GB");
        compare(row(0, "alias").Accessible.name, "alias, link, 900 bytes");
        compare(row(0, "Movies").Accessible.role, Accessible.ListItem);
    }

    function test_anUnreadableFolderIsAnEmptyColumn() {
        harness.makeUnreadable("/root/Music");
        sweep();
        mouseClick(row(0, "Music"));
        compare(openColumns(), 2);
        compare(findChild(item("sweeperColumn1"), "rowList").count, 0);
    }

    function test_a_column_that_is_being_read_says_so_until_its_rows_come() {
        sweep();
        harness.holdDisk();
        harness.viewModel.selectRow(0, harness.rowOf(0, "Music"));
        item("columnRow").forceLayout();
        const column = item("sweeperColumn1");
        const spinner = findChild(column, "columnSpinner");
        const list = findChild(column, "rowList");
        verify(spinner.visible);
        compare(box(spinner, column), Qt.rect((column.width - 16) / 2, 12, 16, 16));
        compare(list.Accessible.description, "Reading…");
        harness.releaseDisk();
        row(1, "song.mp3");
        verify(!spinner.visible);
        compare(list.Accessible.description, "");
    }

    function test_a_column_keeps_its_rows_while_they_are_read_again() {
        sweep();
        harness.holdDisk();
        harness.viewModel.selectRow(0, harness.rowOf(0, "Music"));
        harness.releaseDisk();
        harness.holdDisk();
        harness.viewModel.selectRow(0, harness.rowOf(0, "Music"));
        row(1, "song.mp3");
        verify(!findChild(item("sweeperColumn1"), "columnSpinner").visible);
    }
}
