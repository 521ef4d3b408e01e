import QtQuick
import QtTest

// Where the keyboard is: where Tab leads, what takes it over and gives it back, and how it shows.
KeyboardTestCase {
    name: "KeyboardPlace"

    function test_aSweepStartsWithTheKeyboardInItsColumn() {
        sweep();
        compare(keyboardAt(), "0:");
        compare(selectedNames(), "", "and nothing selected");
        press(Qt.Key_Down);
        compare(keyboardAt(), "0:Movies");
        compare(selectedNames(), "Movies");
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
