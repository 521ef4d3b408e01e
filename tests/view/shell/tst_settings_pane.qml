import QtQuick
import QtTest
import Dunmere.Shell
import Dunmere.ShellTest
import Dunmere.Theme

Item {
    id: stage
    width: 900
    height: 500

    SettingsPane {
        id: pane
        width: 740
        height: 500
    }
    SignalSpy {
        id: requests
        target: pane
        signalName: "fullDiskAccessRequested"
    }
    ShellHarness {
        id: harness
    }

    TestCase {
        name: "SettingsPane"
        when: windowShown

        function init() {
            pane.width = 740;
            pane.height = 500;
            requests.clear();
            settle();
        }

        // Positioners lay their children out before the next frame.
        function settle() {
            for (const name of ["settingsBlock", "fullDiskAccessTexts"]) {
                const positioner = findChild(pane, name);
                if (isPolishScheduled(positioner))
                    waitForItemPolished(positioner);
            }
        }

        function place(name) {
            const found = findChild(pane, name);
            verify(found, name);
            const at = found.mapToItem(pane, 0, 0);
            return Qt.rect(at.x, at.y, found.width, found.height);
        }

        function test_texts_data() {
            return [
                { tag: "settingsTitle", text: "Settings", size: 28, weight: Font.DemiBold, color: "primaryText" },
                { tag: "fullDiskAccessHeading", text: "Full Disk Access", size: 14, weight: Font.DemiBold,
                    color: "primaryText" },
                { tag: "fullDiskAccessExplanation", size: 13, weight: Font.Normal, color: "secondaryText",
                    text: "Turn on for Dunmere if sweeps skip folders or Trash fails in protected locations." }
            ];
        }

        function test_texts(data) {
            const text = findChild(pane, data.tag);
            compare(text.text, data.text);
            compare(text.font.pixelSize, data.size);
            compare(text.font.weight, data.weight);
            compare(String(text.color), String(AppTheme[data.color])); // a Text keeps 8 bits of each component
            compare(text.elide, Text.ElideNone);
            compare(text.height, text.lineCount * AppTheme.lineHeight(data.size));
        }

        function test_layout() {
            verify(Qt.colorEqual(pane.color, AppTheme.canvas));
            const width = 520 - 2 * 32;
            compare(place("settingsTitle").x, 32);
            compare(place("settingsTitle").y, 32);
            compare(place("settingsTitle").height, 33);
            compare(place("settingsDivider"), Qt.rect(32, 32 + 33 + 28, width, 1));
            verify(Qt.colorEqual(findChild(pane, "settingsDivider").color, AppTheme.border));
            const row = place("fullDiskAccessRow");
            compare(row.x, 32);
            compare(row.y, 32 + 33 + 28 + 1 + 28);
            compare(row.width, width);
            compare(place("fullDiskAccessHeading").y, row.y);
            compare(place("fullDiskAccessHeading").height, 17);
            compare(place("fullDiskAccessExplanation").y, row.y + 17 + 4);
            const button = place("openButton");
            compare(button.y, row.y);
            compare(button.x + button.width, row.x + row.width);
            compare(button.height, 33);
        }

        function test_textsKeepTheirDistanceFromTheButton() {
            const texts = place("fullDiskAccessTexts");
            compare(place("openButton").x - (texts.x + texts.width), 16 + 12 + 16);
        }

        function test_onANarrowWindowTheExplanationWraps() {
            const wide = { button: place("openButton"), explanation: place("fullDiskAccessExplanation") };
            pane.width = 340;
            settle();
            const explanation = place("fullDiskAccessExplanation");
            verify(explanation.width < wide.explanation.width);
            verify(explanation.height > wide.explanation.height);
            compare(explanation.height % 16, 0);
            const text = findChild(pane, "fullDiskAccessExplanation");
            compare(explanation.height, text.lineCount * 16);
            verify(text.lineCount > 2);
            const button = place("openButton");
            compare(button.width, wide.button.width);
            compare(button.height, wide.button.height);
            compare(button.x + button.width, 340 - 32);
            compare(button.y, place("fullDiskAccessHeading").y);
        }

        function test_onAWideWindowTheBlockStaysAtTheLeadingEdge() {
            pane.width = 900;
            settle();
            compare(place("settingsBlock").x, 32);
            compare(place("settingsBlock").width, 520 - 2 * 32);
        }

        function test_aLowWindowScrolls() {
            pane.height = 120;
            const scroller = findChild(pane, "settingsScroller");
            verify(scroller.contentHeight > 120);
            mouseWheel(pane, 100, 60, 0, -2400);
            tryVerify(() => scroller.contentY > 0);
            tryCompare(scroller, "contentY", scroller.contentHeight - 120);
            const row = place("fullDiskAccessRow");
            compare(row.y + row.height, 120 - 32);
            scroller.contentY = 0;
        }

        function test_openAsksForThePage() {
            mouseClick(findChild(pane, "openButton"));
            compare(requests.count, 1);
        }

        function test_theRequestReachesTheSystem() {
            harness.content.openFullDiskAccess();
            compare(harness.askedUrls.length, 3);
            compare(harness.askedUrls[0], "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles");
        }
    }
}
