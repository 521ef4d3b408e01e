import QtQuick
import QtTest
import Dunmere.Shell
import Dunmere.ShellTest

// The sidebar's width, by pointer and by keys.
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
        name: "SidebarEdge"
        when: windowShown

        property ShellHarness harness
        property ContentView view
        property Item sidebar
        property Item edge

        function init() {
            failOnWarning(/.*/);
            harness = harnessComponent.createObject(stage);
            view = viewComponent.createObject(stage, { content: harness.content });
            sidebar = findChild(view, "sidebar");
            edge = findChild(view, "splitHandle");
            waitForRendering(view);
        }

        // As the application does: the views go before the model.
        function cleanup() {
            view.destroy();
            wait(0);
            harness.destroy();
            wait(0);
        }

        function focusedName(): string {
            return view.Window.activeFocusItem?.objectName ?? "";
        }

        function drag(from: real, by: real) {
            mousePress(view, from, 300);
            // In small steps, as a hand does.
            for (let step = 1; step <= 10; ++step)
                mouseMove(view, from + by * step / 10, 300);
            mouseRelease(view, from + by, 300);
        }

        function test_isDraggedWithinItsBounds_data() {
            return [
                { tag: "a little wider", by: 25, width: 245 },
                { tag: "too wide", by: 300, width: 260 },
                { tag: "a little narrower", by: -12, width: 208 },
                { tag: "too narrow", by: -150, width: 200 }
            ];
        }

        function test_isDraggedWithinItsBounds(data) {
            compare(edge.x, 220);
            drag(220, data.by);
            tryCompare(sidebar, "width", data.width);
            compare(findChild(view, "detail").x, data.width + 1);
            compare(findChild(view, "detail").width, 960 - data.width - 1);
            compare(findChild(view, "drivesButton").width, data.width - 24);
        }

        function test_isHitBesideItsLine() {
            drag(218, 20);
            tryCompare(sidebar, "width", 240);
        }

        function test_keysMoveItWithinItsBounds() {
            keyClick(Qt.Key_F8);
            compare(focusedName(), "splitHandle");
            verify(findChild(edge, "splitFocusRing").visible);
            keyClick(Qt.Key_Right);
            tryCompare(sidebar, "width", 230);
            for (let press = 0; press < 5; ++press)
                keyClick(Qt.Key_Right);
            tryCompare(sidebar, "width", 260);
            keyClick(Qt.Key_Left);
            tryCompare(sidebar, "width", 250);
            keyClick(Qt.Key_Home);
            tryCompare(sidebar, "width", 200);
            keyClick(Qt.Key_Left);
            tryCompare(sidebar, "width", 200);
            keyClick(Qt.Key_End);
            tryCompare(sidebar, "width", 260);
        }

        function test_keysGoOnFromWhereThePointerLeftIt() {
            keyClick(Qt.Key_F8);
            drag(220, 15);
            compare(focusedName(), "splitHandle");
            verify(!findChild(edge, "splitFocusRing").visible, "the pointer shows no focus");
            keyClick(Qt.Key_Left);
            tryCompare(sidebar, "width", 225);
            keyClick(Qt.Key_F8);
            drag(225, -20);
            tryCompare(sidebar, "width", 205);
        }

        function test_aKeyLeadsBackAndEscapeAlsoTheEdge_data() {
            return [
                { tag: "F8", key: Qt.Key_F8, width: 240 },
                { tag: "Return", key: Qt.Key_Return, width: 240 },
                { tag: "Enter", key: Qt.Key_Enter, width: 240 },
                { tag: "Space", key: Qt.Key_Space, width: 240 },
                { tag: "Escape", key: Qt.Key_Escape, width: 220 }
            ];
        }

        function test_aKeyLeadsBackAndEscapeAlsoTheEdge(data) {
            for (const name of ["freeSpaceRow", "settingsRow"]) {
                findChild(view, name).forceActiveFocus(Qt.TabFocusReason);
                keyClick(Qt.Key_F8);
                keyClick(Qt.Key_End);
                keyClick(Qt.Key_Left);
                keyClick(Qt.Key_Left);
                keyClick(data.key);
                compare(focusedName(), name);
                tryCompare(sidebar, "width", data.width);
                verify(!findChild(edge, "splitFocusRing").visible);
                keyClick(Qt.Key_F8);
                keyClick(Qt.Key_Left);
                keyClick(Qt.Key_Left);
                keyClick(Qt.Key_F8);
                tryCompare(sidebar, "width", data.width - 20, 5000, "the next time starts anew");
                keyClick(Qt.Key_F8);
                keyClick(Qt.Key_Right);
                keyClick(Qt.Key_Right);
                keyClick(Qt.Key_F8);
            }
        }

        function test_isNoStopOfTab() {
            view.forceActiveFocus();
            const stops = [];
            for (let press = 0; press < 10; ++press) {
                keyClick(Qt.Key_Tab);
                stops.push(focusedName());
            }
            verify(stops.includes("drivesButton") && stops.includes("volumeList"));
            verify(!stops.includes("splitHandle"));
            keyClick(Qt.Key_F8);
            keyClick(Qt.Key_Tab);
            compare(focusedName(), "volumeList", "but Tab goes on from there");
            keyClick(Qt.Key_F8);
            keyClick(Qt.Key_Backtab);
            compare(focusedName(), "drivesButton");
        }

        function test_waitsForTheQuestionBeforeTheTrash() {
            verify(harness.sweepToTheEnd());
            const question = findChild(findChild(view, "diskSweeperPane"), "trashConfirmation");
            view.content.pane.requestTrash();
            tryCompare(question, "opened", true);
            keyClick(Qt.Key_F8);
            keyClick(Qt.Key_Right);
            tryCompare(sidebar, "width", 220);
            verify(focusedName() !== "splitHandle");
            keyClick(Qt.Key_Escape);
            tryCompare(question, "visible", false);
        }

        function test_leadsBackToNothingThatIsGone() {
            const row = findChild(view, "volumeList");
            row.forceActiveFocus();
            keyClick(Qt.Key_F8);
            mouseClick(findChild(view, "settingsRow"));
            wait(0);
            keyClick(Qt.Key_Right);
            tryCompare(sidebar, "width", 230);
            keyClick(Qt.Key_Return);
            verify(focusedName() !== "splitHandle");
            keyClick(Qt.Key_Tab);
            compare(focusedName(), "freeSpaceRow");
        }
    }
}
