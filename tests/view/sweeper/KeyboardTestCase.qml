import QtQuick
import QtTest
import Dunmere.Sweeper
import Dunmere.SweeperTest

// A sweep without a mouse: what its tests share.
TestCase {
    id: testCase

    when: windowShown
    visible: true
    width: 1000
    height: 600

    property Item pane: null
    readonly property SweeperHarness harness: SweeperHarness {}

    Component {
        id: paneComponent

        DiskSweeperPaneView {
            width: 700
            height: 560
            viewModel: testCase.harness.viewModel
        }
    }

    function init() {
        failOnWarning(/./);
        harness.restart();
        harness.addVolume("/", "Main", 994662584320, 250685575168);
        harness.addVolume("/Volumes/Backup", "Backup", 2000000000000, 1500000000000);
        harness.addVolume("/Volumes/Music", "Music", 2000000000000, 1500000000000);
        harness.addFolder("/root/Empty");
        harness.addFile("/root/notes.txt", 900);
        harness.addFile("/root/Music/song.mp3", 5500000);
        harness.addFile("/root/Movies/old/first.mov", 100000000);
        harness.addFile("/root/Movies/new/second.mov", 900000000);
        harness.addFile("/root/Movies/new/third.mov", 1000);
        pane = createTemporaryObject(paneComponent, testCase);
        waitForRendering(pane);
    }

    function cleanup() {
        harness.viewModel.dismissTrash();
        tryCompare(findChild(pane, "trashConfirmation"), "visible", false);
    }

    function sweep() {
        harness.sweepFolder("/root");
        verify(harness.finishScan());
        layOut();
    }

    function layOut() {
        item("columnRow").forceLayout();
        for (let column = 0; column < openColumns(); ++column)
            list(column).forceLayout();
    }

    function item(name: string): Item {
        const found = findChild(pane, name);
        verify(found, "no item is named " + name);
        return found;
    }

    function openColumns(): int {
        return harness.viewModel.columns.rowCount();
    }

    function list(column: int): Item {
        return findChild(item("sweeperColumn" + column), "rowList");
    }

    function press(key: int) {
        keyClick(key);
        layOut();
    }

    function typeText(text: string) {
        for (const letter of text)
            keyClick(letter);
        layOut();
    }

    /// "column:name" of the row that holds the keyboard; the name of another item that does.
    function keyboardAt(): string {
        const holder = pane.Window.activeFocusItem;
        for (let column = 0; column < openColumns(); ++column) {
            if (list(column) === holder)
                return column + ":";
            if (list(column).currentItem === holder)
                return column + ":" + holder.name;
        }
        return holder ? holder.objectName : "";
    }

    /// Names of the selected rows, one a column.
    function selectedNames(): string {
        const names = [];
        for (let column = 0; column < openColumns(); ++column) {
            const rows = item("sweeperColumn" + column).rows;
            for (let row = 0; row < rows.rowCount(); ++row) {
                if (rows.data(rows.index(row, 0), Qt.UserRole + 7))
                    names.push(rows.data(rows.index(row, 0), Qt.UserRole + 1));
            }
        }
        return names.join();
    }
}
