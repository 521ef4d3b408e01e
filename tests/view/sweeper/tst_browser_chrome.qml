import QtQuick
import QtTest
import Dunmere.Sweeper
import Dunmere.SweeperTest

TestCase {
    id: testCase

    name: "BrowserChrome"
    when: windowShown
    visible: true
    width: 800
    height: 700

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
        harness.failTrash(0);
        harness.addFolder("/root/Empty");
        harness.addFile("/root/notes.txt", 900);
        harness.addFile("/root/Movies/first.mov", 1200000000);
        harness.addFile("/root/Movies/second.mov", 300000000);
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

    function lowerEdge(inner: Item): real {
        return box(inner).y + inner.height;
    }

    function select(column: int, name: string) {
        const row = harness.rowOf(column, name);
        verify(row >= 0, "no row is named " + name);
        harness.viewModel.selectRow(column, row);
    }

    function test_theStatusStripStandsOnTopWhileScanning() {
        harness.sweepFolder("/root");
        const strip = item("statusStrip");
        const text = item("statusText");
        const spinner = item("statusSpinner");
        verify(strip.visible);
        compare(text.text, "Starting…");
        compare(String(strip.color), "#f7f7f7");
        compare(box(strip), Qt.rect(0, 0, 700, 32));
        compare(box(spinner), Qt.rect(14, 8, 16, 16));
        compare(box(text).x, 14 + 16 + 10);
        compare(text.font.pixelSize, 12);
        compare(String(text.color), "#717171");
        compare(text.maximumLineCount, 2);
        compare(box(item("statusDivider")), Qt.rect(0, 32, 700, 1));
        compare(box(item("columnArea")).y, 33);
    }

    function test_theStatusStripCountsAndLeavesWithTheLastSnapshot() {
        harness.sweepFolder("/root");
        verify(harness.applySnapshot());
        compare(item("statusText").text, "1 files · 900 bytes scanned");
        verify(harness.applySnapshot());
        compare(item("statusText").text, "2 files · 1.2 GB scanned");
        verify(harness.finishScan());
        verify(!item("statusStrip").visible);
        verify(!item("statusDivider").visible);
        compare(box(item("columnArea")).y, 0);
    }

    function test_aLongStatusWrapsToTwoLinesAtMost() {
        harness.sweepFolder("/root");
        const text = item("statusText");
        text.text = "many words ".repeat(60);
        compare(text.lineCount, 2);
        compare(item("statusStrip").height, 8 + 30 + 8);
        compare(box(item("statusSpinner")).y, 8 + 7);
    }

    function test_thePartsFollowEachOtherWithoutGaps() {
        harness.sweepFolder("/root");
        verify(harness.finishScan());
        const area = item("columnArea");
        const divider = item("footerDivider");
        const footer = item("footerBar");
        compare(area.width, 700);
        compare(box(divider).y, lowerEdge(area));
        compare(divider.height, 1);
        compare(box(footer).y, lowerEdge(divider));
        compare(lowerEdge(footer), 560);
        compare(footer.width, 700);
        compare(String(footer.color), "#f7f7f7");
    }

    function test_columnsNeverGetLowerThan360() {
        harness.sweepFolder("/root");
        verify(harness.finishScan());
        compare(item("columnRow").height, item("columnArea").height);
        pane.height = 300;
        compare(item("columnRow").height, 360);
        compare(item("columnArea").height, 360);
    }

    function test_footerLook() {
        harness.sweepFolder("/root");
        verify(harness.finishScan());
        const footer = item("footerBar");
        const trash = item("trashButton");
        const status = item("footerStatus");
        const reveal = item("revealButton");
        const trashIcon = findChild(trash, "trashIcon");
        const revealIcon = findChild(reveal, "revealIcon");
        const revealLabel = findChild(reveal, "revealLabel");

        compare(box(trash).x, 16);
        compare(box(status).x, box(trash).x + trash.width + 16);
        compare(box(status).x + status.width, box(reveal).x - 16);
        compare(box(reveal).x + reveal.width, 700 - 16);
        compare(footer.height, 10 + Math.max(trash.height, status.height, reveal.height) + 10);
        for (const part of [trash, status, reveal])
            fuzzyCompare(box(part).y + part.height / 2, box(footer).y + footer.height / 2, 0.5);

        compare(trashIcon.systemImage, "trash");
        compare(trashIcon.pixelSize, 18);
        compare(String(trashIcon.color), "#000000");
        compare(status.font.pixelSize, 12);
        compare(String(status.color), "#717171");
        compare(status.maximumLineCount, 3);
        compare(status.horizontalAlignment, Text.AlignLeft);
        compare(revealIcon.systemImage, "folder");
        compare(revealIcon.pixelSize, 18);
        compare(revealLabel.text, "Reveal");
        compare(revealLabel.font.pixelSize, 10);
        compare(revealLabel.font.weight, Font.Medium);
        compare(String(revealIcon.color), "#f05a28");
        compare(String(revealLabel.color), "#f05a28");
        compare(box(revealLabel).y - lowerEdge(revealIcon), 2);
    }

    function test_nothingOpenDisablesBothButtons() {
        const trash = item("trashButton");
        const reveal = item("revealButton");
        compare(trash.enabled, false);
        compare(reveal.enabled, false);
        compare(String(findChild(trash, "trashIcon").color), "#8c8c8c");
        compare(String(findChild(reveal, "revealIcon").color), "#8c8c8c");
        compare(String(findChild(reveal, "revealLabel").color), "#8c8c8c");
        compare(trash.opacity, 1, "the grey is the whole sign");
        compare(item("footerStatus").text, "Select an item.");
    }

    function test_theRootOfTheVolumeCanBeRevealedButNotTrashed() {
        harness.sweepFolder("/");
        verify(harness.finishScan());
        compare(item("trashButton").enabled, false);
        compare(String(findChild(item("trashButton"), "trashIcon").color), "#8c8c8c");
        compare(item("revealButton").enabled, true);
        compare(item("footerStatus").text, "/");
    }

    function test_footerTexts() {
        harness.sweepFolder("/root");
        const status = item("footerStatus");
        compare(status.text, "Indexing… folder sizes with + grow as more files are found. If large folders stay at zero, check Full Disk Access for this app in Settings (other users’ homes and some system paths).");
        verify(harness.finishScan());
        compare(status.text, "root / /");
        select(0, "Movies");
        compare(status.text, "Movies / /root");
        select(1, "first.mov");
        compare(status.text, "first.mov / /root/Movies");
    }

    function test_unreadableFoldersAreToldInTheFooter() {
        harness.makeUnreadable("/root/Empty");
        harness.sweepFolder("/root");
        verify(harness.finishScan());
        compare(item("footerStatus").text, "Some folders could not be read (permissions). Sizes may be low—enable Full Disk Access in Settings, or use Reveal in Finder.");
        select(0, "Movies");
        verify(item("footerStatus").text.startsWith("Some folders"));
    }

    function test_aFailedListingIsToldInTheFooterUntilTheNextSelection() {
        harness.makeUnreadable("/root/Empty");
        harness.sweepFolder("/root");
        verify(harness.finishScan());
        select(0, "Empty");
        compare(item("footerStatus").text, "The file “Empty” couldn’t be opened because you don’t have permission to view it.");
        select(0, "notes.txt");
        verify(item("footerStatus").text.startsWith("Some folders"));
    }

    function test_aLongStatusKeepsToThreeLines() {
        harness.addFile("/root/" + "long name ".repeat(24).trim() + "/x", 5);
        harness.sweepFolder("/root");
        verify(harness.finishScan());
        pane.width = 300;
        select(0, "long name ".repeat(24).trim());
        compare(item("footerStatus").lineCount, 3);
        verify(item("footerStatus").truncated);
        compare(item("footerBar").height, 10 + 45 + 10);
    }

    function test_revealShowsExactlyTheSelection() {
        harness.addFileOfBytes("/root", "caf\u00e9.txt", 77);
        harness.sweepFolder("/root");
        verify(harness.finishScan());
        mouseClick(item("revealButton"));
        select(0, "notes.txt");
        mouseClick(item("revealButton"));
        compare(harness.revealed, ["/root", "/root/notes.txt"]);
    }

    function test_helpTexts_data() {
        return [
            {
                tag: "trash",
                button: "trashButton",
                text: "Move selection to Trash"
            },
            {
                tag: "reveal",
                button: "revealButton",
                text: "Show in Finder"
            }
        ];
    }

    function test_helpTexts(data) {
        harness.sweepFolder("/root");
        const button = item(data.button);
        const tip = findChild(button, "helpTip");
        verify(tip);
        verify(!tip.visible);
        mouseMove(button, button.width / 2, button.height / 2);
        tryCompare(tip, "visible", true);
        compare(tip.text, data.text);
        compare(button.Accessible.description, data.text);
        mouseMove(pane, 300, 300);
        tryCompare(tip, "visible", false);
    }

    function test_buttonsHaveNamesForAssistiveTechnology() {
        compare(item("trashButton").Accessible.name, "Move to Trash");
        compare(item("revealButton").Accessible.name, "Reveal");
    }
}
