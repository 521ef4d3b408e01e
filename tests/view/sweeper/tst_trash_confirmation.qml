import QtQuick
import QtTest
import Dunmere.Sweeper
import Dunmere.SweeperTest

TestCase {
    id: testCase

    name: "TrashConfirmation"
    when: windowShown
    visible: true
    width: 800
    height: 600

    readonly property int permissionDenied: 13

    property Item pane: null
    property QtObject question: null

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
        harness.failTrash(0);
        harness.addFile("/root/notes.txt", 900);
        harness.addFile("/root/Photos/one.jpg", 1200000);
        harness.addFile("/root/Photos/two.jpg", 300000);
        pane = createTemporaryObject(paneComponent, testCase);
        harness.sweepFolder("/root");
        verify(harness.finishScan());
        waitForRendering(pane);
        question = findChild(pane, "trashConfirmation");
        verify(question);
    }

    function cleanup() {
        harness.viewModel.dismissTrash();
        tryCompare(question, "visible", false);
    }

    function part(name: string): Item {
        const found = findChild(question.contentItem, name);
        verify(found, "no item is named " + name);
        return found;
    }

    function select(column: int, name: string) {
        harness.viewModel.selectRow(column, harness.rowOf(column, name));
    }

    function ask() {
        mouseClick(findChild(pane, "trashButton"));
        tryCompare(question, "opened", true);
        waitForRendering(question.contentItem);
    }

    function test_theLongestNameLeavesTheAnswersInTheSmallestWindow() {
        harness.addFile("/root/" + "\n".repeat(255), 9000000); // the longest to show of all names of 255 bytes
        harness.sweepFolder("/root");
        verify(harness.finishScan());
        harness.viewModel.selectRow(0, 0);
        ask();
        const title = part("trashConfirmTitle");
        compare(title.text, "Move “" + "[U+000A]".repeat(255) + "” to Trash?");
        verify(!title.truncated);
        verify(title.contentWidth <= title.width);
        verify(question.width <= 960 - 2 * 20, "the card is " + question.width + " wide");
        verify(question.height <= 560 - 2 * 20, "the card is " + question.height + " high");
    }

    function test_theTrashButtonOnlyAsks() {
        select(0, "Photos");
        verify(!question.visible);
        ask();
        compare(harness.viewModel.confirmTrash, true);
        compare(harness.trashed, []);
    }

    function test_look() {
        select(0, "Photos");
        ask();
        const title = part("trashConfirmTitle");
        const move = part("trashConfirmMove");
        const cancel = part("trashConfirmCancel");
        compare(title.text, "Move “Photos” to Trash?");
        compare(title.font.weight, Font.Bold);
        compare(title.textFormat, Text.PlainText);
        verify(title.visible);
        compare(move.text, "Move to Trash");
        compare(cancel.text, "Cancel");
        verify(title.y + title.height <= move.y);
        verify(move.y + move.height <= cancel.y, "the destructive button comes first");
        compare(String(findChild(move, "title").color), "#ff3b30");
        // In the middle of the whole window, which is dimmed.
        const window = pane.Window.window;
        fuzzyCompare(question.x + question.width / 2, window.width / 2, 1);
        fuzzyCompare(question.y + question.height / 2, window.height / 2, 1);
    }

    function test_theWindowIsDimmedAndItsControlsAreOutOfReach() {
        select(0, "Photos");
        const window = pane.Window.window.contentItem;
        compare(String(grabImage(window).pixel(690, 400)), "#ffffff");
        ask();
        compare(String(grabImage(window).pixel(690, 400)), "#bfbfbf");
        // A press on the footer's button below the dimming reveals nothing, and the question stays.
        mouseClick(findChild(pane, "revealButton"));
        compare(harness.revealed, []);
        verify(question.visible);
        compare(harness.viewModel.confirmTrash, true);
    }

    function test_moveTrashesTheOpenFolderAndClosesItsColumn() {
        select(0, "Photos");
        ask();
        mouseClick(part("trashConfirmMove"));
        compare(harness.trashed, ["/root/Photos"]);
        tryCompare(question, "visible", false);
        compare(harness.viewModel.confirmTrash, false);
        compare(harness.viewModel.columns.rowCount(), 1);
        compare(harness.rowOf(0, "Photos"), -1);
    }

    function test_moveTrashesTheSelectedFileAndKeepsItsColumn() {
        select(0, "Photos");
        select(1, "one.jpg");
        ask();
        compare(part("trashConfirmTitle").text, "Move “one.jpg” to Trash?");
        mouseClick(part("trashConfirmMove"));
        compare(harness.trashed, ["/root/Photos/one.jpg"]);
        compare(harness.viewModel.columns.rowCount(), 2);
        compare(harness.rowOf(1, "one.jpg"), -1);
        compare(harness.rowOf(1, "two.jpg"), 0);
    }

    function test_aRefusalIsToldInTheFooterAndChangesNothing() {
        harness.failTrash(permissionDenied);
        select(0, "notes.txt");
        ask();
        mouseClick(part("trashConfirmMove"));
        compare(findChild(pane, "footerStatus").text, "“locked” couldn’t be moved to the trash because you don’t have permission to access it.");
        verify(harness.rowOf(0, "notes.txt") >= 0);
        compare(harness.viewModel.confirmTrash, false);
    }

    function test_cancelLeavesEverything() {
        select(0, "notes.txt");
        ask();
        mouseClick(part("trashConfirmCancel"));
        compare(harness.trashed, []);
        compare(harness.viewModel.confirmTrash, false);
        tryCompare(question, "visible", false);
    }

    function test_escapeCancels() {
        select(0, "notes.txt");
        ask();
        keyClick(Qt.Key_Escape);
        compare(harness.viewModel.confirmTrash, false);
        tryCompare(question, "visible", false);
        compare(harness.trashed, []);
        ask();
        mouseClick(part("trashConfirmMove"));
        compare(harness.trashed, ["/root/notes.txt"], "and it can be asked again");
    }

    function test_returnDoesNothingDestructive() {
        select(0, "notes.txt");
        ask();
        keyClick(Qt.Key_Return);
        keyClick(Qt.Key_Enter);
        verify(question.visible);
        compare(harness.trashed, []);
        part("trashConfirmMove").forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Return);
        keyClick(Qt.Key_Enter);
        verify(question.visible);
        compare(harness.trashed, []);
    }

    function test_noButtonHoldsTheKeyboardWhenTheQuestionOpensAgain() {
        harness.viewModel.requestTrash();
        tryCompare(question, "opened", true);
        keyClick(Qt.Key_Tab);
        verify(part("trashConfirmMove").activeFocus);
        keyClick(Qt.Key_Escape);
        tryCompare(question, "visible", false);
        harness.viewModel.requestTrash();
        tryCompare(question, "opened", true);
        keyClick(Qt.Key_Space);
        keyClick(Qt.Key_Return);
        verify(harness.viewModel.confirmTrash);
        verify(!part("trashConfirmMove").activeFocus);
        verify(!part("trashConfirmCancel").activeFocus);
    }

    function test_tabStaysWithinTheQuestionAndSpacePresses() {
        select(0, "notes.txt");
        ask();
        const move = part("trashConfirmMove");
        const cancel = part("trashConfirmCancel");
        keyClick(Qt.Key_Tab);
        verify(move.activeFocus);
        keyClick(Qt.Key_Tab);
        verify(cancel.activeFocus);
        keyClick(Qt.Key_Tab);
        verify(move.activeFocus);
        keyClick(Qt.Key_Space);
        compare(harness.trashed, ["/root/notes.txt"]);
    }

    function test_aPressBesideTheQuestionDoesNothing() {
        select(0, "notes.txt");
        ask();
        mouseClick(pane, 5, 5);
        verify(question.visible);
        compare(harness.viewModel.confirmTrash, true);
        compare(harness.viewModel.columns.rowCount(), 1);
    }

    function test_aLongNameWrapsInsideTheCard() {
        const name = "x".repeat(255);
        harness.restart();
        harness.addFile("/root/" + name, 5);
        harness.sweepFolder("/root");
        verify(harness.finishScan());
        select(0, name);
        ask();
        const title = part("trashConfirmTitle");
        verify(title.lineCount > 3);
        verify(!title.truncated);
        compare(title.width, question.availableWidth);
        verify(title.contentWidth <= title.width);
        verify(question.height < pane.height);
    }

    function test_aNameCannotDisguiseItself() {
        harness.restart();
        harness.addFile("/root/evil\u202Egpj.exe<b>\n", 5);
        harness.sweepFolder("/root");
        verify(harness.finishScan());
        harness.viewModel.selectRow(0, 0);
        ask();
        const text = part("trashConfirmTitle").text;
        verify(!text.includes("\u202E"));
        verify(!text.includes("\n"));
        verify(text.includes("<b>"));
    }
}
