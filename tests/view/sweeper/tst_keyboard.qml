import QtQuick
import QtTest
import Dunmere.Sweeper
import Dunmere.SweeperTest

// A sweep without a mouse.
TestCase {
    id: testCase

    name: "Keyboard"
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
        return harness.viewModel.columns.count;
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
            for (let row = 0; row < rows.count; ++row) {
                if (rows.data(rows.index(row, 0), Qt.UserRole + 7))
                    names.push(rows.data(rows.index(row, 0), Qt.UserRole + 1));
            }
        }
        return names.join();
    }

    function test_aSweepStartsWithTheKeyboardInItsColumn() {
        sweep();
        compare(keyboardAt(), "0:");
        compare(selectedNames(), "", "and nothing selected");
        press(Qt.Key_Down);
        compare(keyboardAt(), "0:Movies");
        compare(selectedNames(), "Movies");
    }

    function test_upFromNoRowTakesTheLast() {
        sweep();
        press(Qt.Key_Up);
        compare(keyboardAt(), "0:Empty");
    }

    function test_upAndDownMoveTheSelection() {
        sweep();
        press(Qt.Key_Down);
        compare(openColumns(), 2);
        compare(harness.rowOf(1, "new"), 0);
        press(Qt.Key_Down);
        compare(selectedNames(), "Music");
        compare(harness.rowOf(1, "song.mp3"), 0, "its column shows what is in it");
        press(Qt.Key_Down);
        compare(selectedNames(), "notes.txt");
        compare(openColumns(), 1, "a file has no column");
        press(Qt.Key_Up);
        compare(selectedNames(), "Music");
        verify(harness.viewModel.footerStatus.startsWith("Music / "));
    }

    function test_theEndsStopTheSelection() {
        sweep();
        press(Qt.Key_End);
        compare(keyboardAt(), "0:Empty");
        press(Qt.Key_Down);
        compare(keyboardAt(), "0:Empty");
        compare(selectedNames(), "Empty");
        press(Qt.Key_Home);
        compare(keyboardAt(), "0:Movies");
        press(Qt.Key_Up);
        compare(keyboardAt(), "0:Movies");
    }

    function test_rightGoesIntoTheFolderAndLeftComesBack() {
        sweep();
        press(Qt.Key_Down);
        press(Qt.Key_Right);
        compare(keyboardAt(), "1:new");
        compare(selectedNames(), "Movies,new");
        press(Qt.Key_Right);
        press(Qt.Key_Down);
        compare(keyboardAt(), "2:third.mov");
        compare(selectedNames(), "Movies,new,third.mov");
        verify(harness.viewModel.footerStatus.startsWith("third.mov / "));
        press(Qt.Key_Left);
        compare(keyboardAt(), "1:new");
        compare(selectedNames(), "Movies,new", "the folder is the selection again");
        verify(harness.viewModel.footerStatus.startsWith("new / "));
        press(Qt.Key_Right);
        compare(keyboardAt(), "2:third.mov", "where the keyboard was before");
        press(Qt.Key_Left);
        press(Qt.Key_Left);
        compare(keyboardAt(), "0:Movies");
        compare(selectedNames(), "Movies");
        compare(openColumns(), 2);
        press(Qt.Key_Left);
        compare(keyboardAt(), "0:Movies");
    }

    function test_rightStaysOnAFileAndAnEmptyFolder() {
        sweep();
        typeText("notes");
        press(Qt.Key_Right);
        compare(keyboardAt(), "0:notes.txt");
        press(Qt.Key_End);
        press(Qt.Key_Right);
        compare(keyboardAt(), "0:Empty");
        compare(openColumns(), 2);
    }

    function test_theKeyboardGoesOnFromAClickedRow() {
        sweep();
        mouseClick(list(0), 50, 28 + 14);
        compare(keyboardAt(), "0:Music");
        verify(!findChild(list(0).currentItem, "rowFocusRing").visible, "the mouse shows no ring");
        press(Qt.Key_Up);
        compare(selectedNames(), "Movies");
        verify(findChild(list(0).currentItem, "rowFocusRing").visible);
    }

    function test_typingSelectsTheNameThatBeginsSo() {
        sweep();
        typeText("mu");
        compare(selectedNames(), "Music");
        tryVerify(() => !findTypeSelect(list(0)).typed, 5000, "a pause ends the beginning");
        typeText("n");
        compare(selectedNames(), "notes.txt");
    }

    function findTypeSelect(where: Item): TypeSelect {
        return Array.from(where.resources).find(thing => thing instanceof TypeSelect);
    }

    function test_theSameLetterWalksTheRowsThatBeginWithIt() {
        sweep();
        typeText("m");
        compare(selectedNames(), "Movies");
        typeText("m");
        compare(selectedNames(), "Music");
        typeText("m");
        compare(selectedNames(), "Movies");
    }

    function test_aSpaceInABeginningIsNoPress() {
        harness.addFile("/root/old letter.txt", 30);
        harness.addFile("/root/old letters.txt", 20);
        harness.addFile("/root/old_map.txt", 40);
        sweep();
        typeText("old");
        compare(selectedNames(), "old_map.txt");
        typeText(" ");
        compare(selectedNames(), "old letter.txt");
        typeText("letters");
        compare(selectedNames(), "old letters.txt");
    }

    function test_noLetterOrShortcutMovesToTheTrashOrReveals() {
        sweep();
        press(Qt.Key_Down);
        const keys = [Qt.Key_Delete, Qt.Key_Backspace, Qt.Key_T, Qt.Key_R, Qt.Key_M, Qt.Key_D, Qt.Key_F8];
        const modifiers = [Qt.NoModifier, Qt.AltModifier, Qt.ControlModifier, Qt.ShiftModifier, Qt.MetaModifier, Qt.ControlModifier | Qt.ShiftModifier];
        for (const key of keys) {
            for (const modifier of modifiers) {
                keyClick(key, modifier);
                compare(harness.viewModel.confirmTrash, false);
                compare(harness.revealed, []);
            }
        }
        compare(harness.trashed, []);
    }

    function test_aKeyWithAModifierTypesNothing() {
        sweep();
        keyClick("m", Qt.ControlModifier);
        keyClick("m", Qt.AltModifier);
        keyClick(Qt.Key_Down, Qt.AltModifier);
        compare(selectedNames(), "");
    }

    function test_aMoveBringsTheRowIntoViewAndAClickDoesNotScroll() {
        harness.addFiles("/root/Movies", 100);
        sweep();
        press(Qt.Key_Down);
        press(Qt.Key_Right);
        press(Qt.Key_End);
        const end = list(1).contentY;
        verify(end > 0);
        verify(list(1).currentItem.y + 28 <= list(1).contentY - list(1).originY + list(1).height);
        press(Qt.Key_Up);
        compare(list(1).contentY, end, "a row in view scrolls nothing");
        press(Qt.Key_Home);
        compare(list(1).contentY - list(1).originY, 0);

        list(1).contentY = 14;
        mouseClick(list(1), 50, 2);
        compare(selectedNames(), "Movies,new");
        compare(list(1).contentY, 14, "not even to a row of which half is in view");
    }

    function test_aMoveIntoAColumnBringsTheColumnIntoView() {
        sweep();
        press(Qt.Key_Down);
        press(Qt.Key_Right);
        compare(openColumns(), 3);
        compare(item("columnScroller").contentX, 0, "an opened column scrolls nothing");
        press(Qt.Key_Right);
        compare(item("columnScroller").contentX, 2 * 281 + 281 - 700);
        press(Qt.Key_Left);
        press(Qt.Key_Left);
        compare(item("columnScroller").contentX, 0);
    }

    function test_tabStopsOnceInTheColumnsThenInTheFooter() {
        sweep();
        press(Qt.Key_Down);
        press(Qt.Key_Right);
        compare(keyboardAt(), "1:new");
        keyClick(Qt.Key_Tab);
        compare(keyboardAt(), "trashButton");
        keyClick(Qt.Key_Tab);
        compare(keyboardAt(), "revealButton");
        keyClick(Qt.Key_Backtab);
        keyClick(Qt.Key_Backtab);
        compare(keyboardAt(), "1:new", "the column that had the keyboard");
    }

    function test_tabWalksThePicker() {
        item("volumeList").forceActiveFocus();
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Tab);
        compare(keyboardAt(), "openFolderButton");
        keyClick(Qt.Key_Tab);
        compare(keyboardAt(), "sweepSelectedDriveButton");
    }

    function test_keysSelectDrives() {
        item("volumeList").forceActiveFocus();
        keyClick(Qt.Key_End);
        compare(harness.viewModel.selectedVolume, 2);
        keyClick(Qt.Key_Home);
        compare(harness.viewModel.selectedVolume, 0);
        keyClick("m");
        compare(harness.viewModel.selectedVolume, 1);
        keyClick("u");
        compare(harness.viewModel.selectedVolume, 2);
    }

    function test_theFocusShowsOnEveryControl() {
        item("volumeList").forceActiveFocus();
        for (const name of ["openFolderButton", "sweepSelectedDriveButton"]) {
            keyClick(Qt.Key_Down);
            keyClick(Qt.Key_Tab);
            if (name === "sweepSelectedDriveButton")
                keyClick(Qt.Key_Tab);
            compare(keyboardAt(), name);
            verify(findChild(item(name), "focusRing").visible, name);
            item("volumeList").forceActiveFocus();
        }
        sweep();
        verify(findChild(item("sweeperColumn0"), "columnFocusRing").visible);
        for (const name of ["trashButton", "revealButton"]) {
            keyClick(Qt.Key_Tab);
            verify(findChild(item(name), "focusRing").visible, name);
        }
    }

    function test_aSweepStartedByMouseShowsNoFocus() {
        harness.chooseFolder("/root");
        mouseClick(item("openFolderButton"));
        verify(harness.finishScan());
        layOut();
        compare(keyboardAt(), "0:");
        verify(!findChild(item("sweeperColumn0"), "columnFocusRing").visible);
    }

    function test_theKeyboardReturnsToTheTrashButtonAfterTheQuestion() {
        sweep();
        press(Qt.Key_Down);
        keyClick(Qt.Key_Tab);
        keyClick(Qt.Key_Space);
        tryCompare(findChild(pane, "trashConfirmation"), "opened", true);
        keyClick(Qt.Key_Escape);
        tryCompare(findChild(pane, "trashConfirmation"), "visible", false);
        compare(keyboardAt(), "trashButton");
        verify(findChild(item("trashButton"), "focusRing").visible);
    }

    function test_theKeyboardReturnsToTheRowAfterAQuestionByMouse() {
        sweep();
        mouseClick(list(0), 50, 14);
        mouseClick(item("trashButton"));
        tryCompare(findChild(pane, "trashConfirmation"), "opened", true);
        keyClick(Qt.Key_Escape);
        tryCompare(findChild(pane, "trashConfirmation"), "visible", false);
        compare(keyboardAt(), "0:Movies");
    }

    function test_afterATrashTheKeyboardStandsWhereTheRowWas() {
        harness.addFiles("/root/Movies/new", 5);
        sweep();
        typeText("movies");
        press(Qt.Key_Right);
        press(Qt.Key_Right);
        press(Qt.Key_Down);
        press(Qt.Key_Down);
        const before = harness.viewModel.footerStatus.split(" / ")[0];
        mouseClick(item("trashButton"));
        tryCompare(findChild(pane, "trashConfirmation"), "opened", true);
        harness.viewModel.confirmedTrash();
        tryCompare(findChild(pane, "trashConfirmation"), "visible", false);
        layOut();
        compare(harness.rowOf(2, before), -1);
        compare(item("sweeperColumn2").rows.focusedRow, 2);
        compare(selectedNames(), "Movies,new", "and nothing more is selected");
        verify(keyboardAt().startsWith("2:"), keyboardAt());
        press(Qt.Key_Space);
        compare(selectedNames().split(",").length, 3);
    }

    function test_theColumnsTakeTheKeyboardFromAButtonThatHasNothingToDoAnyMore() {
        harness.addFile("/only/file", 10);
        harness.sweepFolder("/");
        verify(harness.finishScan());
        layOut();
        typeText("only");
        keyClick(Qt.Key_Tab);
        compare(keyboardAt(), "trashButton");
        keyClick(Qt.Key_Space);
        tryCompare(findChild(pane, "trashConfirmation"), "opened", true);
        keyClick(Qt.Key_Tab);
        keyClick(Qt.Key_Space);
        tryCompare(findChild(pane, "trashConfirmation"), "visible", false);
        compare(harness.trashed, ["/only"]);
        compare(item("trashButton").enabled, false);
        verify(keyboardAt().startsWith("0:"), keyboardAt());
    }

    function test_theKeyboardGoesToTheDrivesWhenAScanFails() {
        item("volumeList").forceActiveFocus();
        harness.sweepFolder("/gone");
        tryVerify(() => harness.runMainThread() && !harness.viewModel.browsing);
        compare(keyboardAt(), "volumeList");
    }

    function test_aColumnThatClosesUnderTheKeyboardGivesItBack() {
        sweep();
        press(Qt.Key_Down);
        press(Qt.Key_Right);
        press(Qt.Key_Right);
        compare(keyboardAt(), "2:second.mov");
        harness.viewModel.selectRow(0, harness.rowOf(0, "Music"));
        layOut();
        compare(openColumns(), 2);
        compare(keyboardAt(), "0:Movies");
    }
}
