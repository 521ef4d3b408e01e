import QtQuick
import QtTest
import Dunmere.Shell
import Dunmere.ShellTest
import Dunmere.Theme

Item {
    id: stage
    width: 960
    height: 560

    Component {
        id: harnessComponent

        ShellHarness {}
    }
    Component {
        id: viewComponent

        ContentView {
            anchors.fill: parent
        }
    }

    TestCase {
        id: testCase
        name: "ContentView"
        when: windowShown

        property ShellHarness harness
        property ContentView view

        function init() {
            failOnWarning(/.*/);
            harness = harnessComponent.createObject(testCase);
            view = viewComponent.createObject(stage, { content: harness.content });
            waitForRendering(view);
        }

        // As the application does: the views go before the model.
        function cleanup() {
            view.destroy();
            wait(0);
            harness.destroy();
            wait(0);
        }

        function item(name) {
            const found = findChild(view, name);
            verify(found, name);
            return found;
        }

        // Of the shown panes: one that is on its way out may still be found by name.
        function shows(name) {
            const panes = Array.from(item("detail").children);
            return panes.some(pane => pane.visible && pane.objectName === name);
        }

        function place(name) {
            const found = item(name);
            const at = found.mapToItem(view, 0, 0);
            return Qt.rect(at.x, at.y, found.width, found.height);
        }

        function test_opensOnFreeSpaceWithTheVolumePicker() {
            verify(item("freeSpaceRow").isSelected);
            verify(!item("settingsRow").isSelected);
            verify(shows("diskSweeperPane"));
            verify(!shows("settingsPane"));
            verify(item("volumePicker").visible);
        }

        function test_sidebarLayout() {
            compare(place("sidebar"), Qt.rect(0, 0, 220, 560));
            compare(place("freeSpaceRow"), Qt.rect(12, 16, 196, 33));
            compare(place("settingsRow"), Qt.rect(12, 16 + 33 + 4, 196, 33));
            compare(place("drivesButton"), Qt.rect(12, 560 - 16 - 33, 196, 33));
            compare(place("sidebarDivider"), Qt.rect(12, 560 - 16 - 33 - 10 - 1, 196, 1));
            const area = place("sidebarRowArea");
            compare(area.y + area.height, 560 - 16 - 33 - 10 - 1 - 10);
        }

        function test_sidebarRows() {
            compare(item("freeSpaceRow").title, "Free Space");
            compare(item("freeSpaceRow").systemImage, "rectangle.split.3x1");
            compare(item("settingsRow").title, "Settings");
            compare(item("settingsRow").systemImage, "slider.horizontal.3");
        }

        function test_drivesButton() {
            const button = item("drivesButton");
            const icon = findChild(button, "icon");
            const title = findChild(button, "title");
            compare(title.text, "Drives…");
            compare(title.font.pixelSize, 14);
            compare(title.font.weight, Font.Normal);
            verify(Qt.colorEqual(title.color, AppTheme.primaryText));
            compare(title.mapToItem(button, 0, 0).x, 10 + 18 + 10);
            compare(title.mapToItem(button, 0, 0).y, 8);
            compare(icon.systemImage, "externaldrive");
            compare(icon.pixelSize, 14);
            verify(Qt.colorEqual(icon.color, AppTheme.primaryText));
            compare(button.helpText, "Return to volume and folder picker");
        }

        function test_theBackgroundsAreCanvas() {
            verify(Qt.colorEqual(view.color, AppTheme.canvas));
            verify(Qt.colorEqual(item("sidebar").color, AppTheme.canvas));
            mouseClick(item("settingsRow"), 150, 16);
            const image = grabImage(view);
            for (const at of [[5, 300], [110, 300], [600, 500]])
                compare(image.red(at[0], at[1]), 247);
        }

        function test_aRowShowsItsPane() {
            mouseClick(item("settingsRow"), 150, 16); // right of the title
            verify(shows("settingsPane"));
            verify(!shows("diskSweeperPane"));
            verify(item("settingsRow").isSelected);
            verify(!item("freeSpaceRow").isSelected);
            mouseClick(item("freeSpaceRow"), 150, 16);
            verify(shows("diskSweeperPane"));
            verify(!shows("settingsPane"));
        }

        function test_withoutASelectionTheSweeperIsShown() {
            harness.selectNone();
            verify(shows("diskSweeperPane"));
            verify(!item("freeSpaceRow").isSelected);
            verify(!item("settingsRow").isSelected);
            mouseClick(item("settingsRow"));
            harness.selectNone();
            verify(shows("diskSweeperPane"));
            verify(!shows("settingsPane"));
        }

        function test_drivesFromSettingsShowsThePickerInOneStep() {
            mouseClick(item("settingsRow"));
            mouseClick(item("drivesButton"), 150, 16); // right of the title
            verify(shows("diskSweeperPane"));
            verify(!shows("settingsPane"));
            verify(item("freeSpaceRow").isSelected);
            verify(!view.content.pane.browsing);
            compare(harness.requests, 1);
            verify(!harness.pendingGoToDrives);
        }

        function test_drivesTwiceInARowAsksTwice() {
            for (let round = 1; round <= 2; ++round) {
                verify(harness.sweepToTheEnd());
                verify(view.content.pane.browsing);
                mouseClick(item("drivesButton"));
                verify(!view.content.pane.browsing);
                verify(item("volumePicker").visible);
                compare(harness.requests, round);
                verify(!harness.pendingGoToDrives);
            }
        }

        function test_freeSpaceDoesNotEndASweep() {
            verify(harness.sweepToTheEnd());
            mouseClick(item("freeSpaceRow"));
            verify(view.content.pane.browsing);
            compare(harness.requests, 0);
        }

        function test_aFinishedSweepIsGoneAfterTheSettings() {
            verify(harness.sweepToTheEnd());
            verify(!item("volumePicker").visible);
            mouseClick(item("settingsRow"));
            wait(0); // the old pane goes
            mouseClick(item("freeSpaceRow"));
            verify(shows("diskSweeperPane"));
            verify(!view.content.pane.browsing);
            verify(item("volumePicker").visible);
        }

        function test_tabGoesThroughTheSidebarFirst() {
            view.forceActiveFocus();
            for (const name of ["freeSpaceRow", "settingsRow", "drivesButton"]) {
                keyClick(Qt.Key_Tab);
                verify(item(name).activeFocus, name);
            }
            keyClick(Qt.Key_Tab);
            verify(!item("drivesButton").activeFocus);
        }

        function test_keysPressTheFocusedRow() {
            view.forceActiveFocus();
            keyClick(Qt.Key_Tab);
            keyClick(Qt.Key_Tab);
            keyClick(Qt.Key_Return);
            verify(shows("settingsPane"));
            keyClick(Qt.Key_Backtab);
            keyClick(Qt.Key_Space);
            verify(shows("diskSweeperPane"));
        }
    }
}
