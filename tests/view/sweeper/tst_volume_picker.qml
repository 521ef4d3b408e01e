import QtQuick
import QtTest
import Dunmere.Sweeper
import Dunmere.SweeperTest

TestCase {
    id: testCase

    name: "VolumePicker"
    when: windowShown
    visible: true
    width: 760
    height: 560

    property Item pane: null

    SweeperHarness {
        id: harness
    }
    Component {
        id: paneComponent

        DiskSweeperPaneView {
            width: 760
            height: 560
            viewModel: harness.viewModel
        }
    }

    function init() {
        failOnWarning(/./);
        harness.restart();
        harness.addVolume("/", "Main", 994662584320, 250685575168);
        harness.addVolume("/Volumes/Backup", "Backup", 2000000000000, 1500000000000);
        pane = createTemporaryObject(paneComponent, testCase);
        waitForRendering(pane);
    }

    function item(name: string): Item {
        const found = findChild(pane, name);
        verify(found, "no item is named " + name);
        return found;
    }

    function box(inner: Item): rect {
        return inner.mapToItem(pane, Qt.rect(0, 0, inner.width, inner.height));
    }

    function test_listsTheVolumesByName() {
        compare(item("volumeList").count, 2);
        compare(findChild(item("volumeRow0"), "volumeName").text, "Backup");
        compare(findChild(item("volumeRow0"), "volumeDetail").text, "1.5 TB free, 500 GB used, 2 TB total");
        compare(findChild(item("volumeRow1"), "volumeName").text, "Main");
        compare(findChild(item("volumeRow1"), "volumeDetail").text, "250.69 GB free, 743.98 GB used, 994.66 GB total");
    }

    function test_rowLook() {
        const row = item("volumeRow0");
        const icon = findChild(row, "icon");
        const frame = findChild(row, "iconFrame");
        const name = findChild(row, "volumeName");
        const detail = findChild(row, "volumeDetail");

        compare(icon.systemImage, "internaldrive");
        compare(icon.pixelSize, 20);
        compare(String(icon.color), "#717171");
        compare(frame.width, 28);
        compare(name.font.pixelSize, 14);
        compare(name.font.weight, Font.DemiBold);
        compare(String(name.color), "#000000");
        compare(detail.font.pixelSize, 13);
        compare(detail.font.weight, Font.Normal);
        compare(String(detail.color), "#717171");

        compare(box(name).x - (box(frame).x + frame.width), 12);
        compare(box(detail).y - (box(name).y + name.height), 2);
        fuzzyCompare(box(icon).y + icon.baselineOffset, box(name).y + name.baselineOffset, 0.5);
        compare([box(icon).y, box(name).y, row.height].filter(y => y !== Math.round(y)), []);
        compare(box(row).y + row.height - (box(detail).y + detail.height), 4);
        verify(Math.min(box(icon).y, box(name).y) - box(row).y >= 4);
        compare(row.height, 49);
        compare(row.width, pane.width);
    }

    function test_buttonBar() {
        const bar = item("buttonBar");
        const open = item("openFolderButton");
        const sweep = item("sweepSelectedDriveButton");
        compare(open.title, "Open Folder…");
        compare(sweep.title, "Sweep Selected Drive…");
        compare(String(bar.color), "#f7f7f7");
        compare(bar.width, pane.width);
        compare(bar.height, 14 + Math.max(open.height, sweep.height) + 14);
        compare(box(sweep).x - (box(open).x + open.width), 12);
        fuzzyCompare(box(open).x - box(bar).x, box(bar).x + bar.width - (box(sweep).x + sweep.width), 1);
        fuzzyCompare(box(open).y + open.height / 2, box(sweep).y + sweep.height / 2, 0.5);
        compare(String(findChild(sweep, "background").color), "#f05a28", "the neutral style");
    }

    function test_hintAndDivider() {
        const hint = item("permissionHint");
        const bar = item("buttonBar");
        const list = item("volumeList");
        compare(hint.text, "Direct install: sweeps use normal macOS file permissions (like Finder). If sizes stay at zero for another user’s home or protected areas, enable Full Disk Access for Dunmere in System Settings.");
        compare(hint.font.pixelSize, 11);
        compare(String(hint.color), "#8c8c8c");
        compare(hint.horizontalAlignment, Text.AlignLeft);
        compare(box(hint).x, 16);
        compare(hint.width, pane.width - 32);
        compare(box(hint).y + hint.height, pane.height - 12);
        compare(box(bar).y + bar.height, box(hint).y);
        compare(box(list).y, 0);
        compare(box(list).y + list.height, box(bar).y - 1, "a divider of one point lies between");
        compare(String(pane.color), "#ffffff");
    }

    function test_noSelectionDisablesTheSweepOfADrive() {
        compare(item("sweepSelectedDriveButton").enabled, false);
        compare(item("openFolderButton").enabled, true);
        mouseClick(item("volumeRow1"));
        compare(item("sweepSelectedDriveButton").enabled, true);
    }

    function test_aClickSelectsAndABlankClickSelectsNone() {
        const highlight = row => findChild(item("volumeRow" + row), "selectionHighlight");
        mouseClick(item("volumeRow1"));
        compare(harness.viewModel.selectedVolume, 1);
        verify(highlight(1).visible);
        verify(!highlight(0).visible);
        mouseClick(item("volumeRow0"));
        verify(highlight(0).visible);
        verify(!highlight(1).visible);
        mouseClick(item("volumeList"), 300, item("volumeList").height - 5);
        compare(harness.viewModel.selectedVolume, -1);
        verify(!highlight(0).visible);
    }

    function test_aClickInAScrolledListMeansTheDriveUnderThePointer() {
        for (let i = 10; i < 40; ++i)
            harness.addVolume("/Volumes/Disk" + i, "Disk" + i, 2000, 1000);
        harness.viewModel.appear();
        const list = item("volumeList");
        tryCompare(list, "count", 32);
        list.contentY = 300;
        waitForRendering(pane);
        const clicked = list.itemAt(100, list.contentY + 60);
        verify(clicked.index > 5, "the list is not scrolled");
        mouseClick(list, 100, 60);
        compare(harness.viewModel.selectedVolume, clicked.index);
    }

    function test_theListShowsItsFocusWhenNoDriveIsSelected() {
        const ring = item("volumeListFocusRing");
        verify(!ring.visible);
        item("volumeList").forceActiveFocus();
        keyClick(Qt.Key_A);
        verify(ring.visible);
        keyClick(Qt.Key_Down);
        verify(!ring.visible);
    }

    function test_selectionTextKeepsItsColours() {
        mouseClick(item("volumeRow0"));
        compare(String(findChild(item("volumeRow0"), "volumeName").color), "#000000");
        compare(String(findChild(item("volumeRow0"), "volumeDetail").color), "#717171");
    }

    function test_arrowKeysMoveTheSelection() {
        item("volumeList").forceActiveFocus();
        keyClick(Qt.Key_Down);
        compare(harness.viewModel.selectedVolume, 0);
        keyClick(Qt.Key_Down);
        compare(harness.viewModel.selectedVolume, 1);
        keyClick(Qt.Key_Down);
        compare(harness.viewModel.selectedVolume, 1);
        keyClick(Qt.Key_Up);
        compare(harness.viewModel.selectedVolume, 0);
    }

    function test_sweepsTheSelectedDrive() {
        harness.addFile("/Volumes/Backup/film.mov", 1200);
        mouseClick(item("volumeRow0"));
        mouseClick(item("sweepSelectedDriveButton"));
        compare(harness.viewModel.browsing, true);
        verify(!item("volumePicker").visible);
        verify(item("browserChrome").visible);
        verify(harness.rowOf(0, "film.mov") >= 0);
    }

    function test_sweepsAChosenFolder() {
        harness.addFile("/root/film.mov", 1200);
        harness.chooseFolder("/root");
        mouseClick(item("openFolderButton"));
        verify(item("browserChrome").visible);
        compare(harness.rowOf(0, "film.mov"), 0);
    }

    function test_aCancelledChooserChangesNothing() {
        harness.chooseFolder("");
        mouseClick(item("openFolderButton"));
        compare(harness.folderChoices, 1);
        verify(item("volumePicker").visible);
    }

    function test_aFailedScanIsToldAtTheTop() {
        const error = item("loadErrorText");
        verify(!error.visible);
        harness.sweepFolder("/gone");
        tryVerify(() => harness.runMainThread() && !harness.viewModel.browsing);
        verify(error.visible);
        compare(error.text, "The file couldn’t be opened.");
        compare(error.font.pixelSize, 13);
        compare(error.font.weight, Font.Normal);
        compare(error.opacity, 0.85);
        compare(String(error.color), "#ff3b30");
        compare(box(error).x, 16);
        compare(box(error).y, 8);
        compare(error.width, pane.width - 32);
        compare(error.horizontalAlignment, Text.AlignLeft);
        compare(box(item("volumeList")).y, 8 + error.height);
    }

    function test_goingToTheDrivesLeavesTheBrowserAndKeepsTheSelection() {
        mouseClick(item("volumeRow0"));
        mouseClick(item("sweepSelectedDriveButton"));
        harness.addVolume("/Volumes/Added", "Added", 1000, 500);
        harness.pendingGoToDrives = true;
        harness.viewModel.pendingGoToDrivesChanged();
        compare(harness.pendingGoToDrives, false);
        verify(item("volumePicker").visible);
        verify(!item("browserChrome").visible);
        compare(item("volumeList").count, 3);
        compare(harness.viewModel.selectedVolume, 1);
        verify(findChild(item("volumeRow1"), "selectionHighlight").visible);
        compare(findChild(item("volumeRow1"), "volumeName").text, "Backup");
    }

    function test_aRequestRaisedWhileAwayIsAnsweredOnAppearance() {
        harness.pendingGoToDrives = true;
        const other = createTemporaryObject(paneComponent, testCase);
        compare(harness.pendingGoToDrives, false);
        verify(findChild(other, "volumePicker").visible);
    }

    function test_markupInAVolumeNameIsShownAsItIs() {
        harness.addVolume("/Volumes/x", "<b>bold</b>", 1000, 500);
        harness.viewModel.appear();
        item("volumeList").forceLayout();
        const row = [0, 1, 2].map(index => findChild(item("volumeRow" + index), "volumeName")).find(label => label.text.includes("bold"));
        compare(row.text, "<b>bold</b>");
        compare(row.textFormat, Text.PlainText);
    }

    function test_everythingHasANameForAssistiveTechnology() {
        compare(item("volumeRow0").Accessible.name, "Backup, 1.5 TB free, 500 GB used, 2 TB total");
        compare(item("volumeRow0").Accessible.role, Accessible.ListItem);
        compare(item("sweepSelectedDriveButton").Accessible.name, "Sweep Selected Drive…");
        compare(item("sweepSelectedDriveButton").Accessible.role, Accessible.Button);
    }
}
