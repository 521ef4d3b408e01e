import QtQuick
import QtTest
import Dunmere.Sweeper

// What the keys do in a column.
KeyboardTestCase {
    name: "ColumnKeys"

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
}
