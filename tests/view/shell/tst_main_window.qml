import QtQuick
import QtTest
import Dunmere.Shell
import Dunmere.ShellTest
import Dunmere.Theme

TestCase {
    id: testCase
    name: "MainWindow"

    ShellHarness {
        id: harness
    }
    Component {
        id: windowComponent

        MainWindow {
            content: harness.content
        }
    }

    property Window window

    function init() {
        window = windowComponent.createObject(null);
        tryVerify(() => window.visible);
    }

    function cleanup() {
        window.destroy();
        wait(0);
    }

    function test_itsContentIsNeverSmallerThan960By560() {
        compare(window.minimumWidth, 960);
        compare(window.minimumHeight, 560);
        verify(window.width >= 960);
        verify(window.height >= 560);
        verify(window.maximumWidth > 10000);
        verify(window.maximumHeight > 10000);
    }

    function test_itsTitleIsTheApplicationsName() {
        compare(window.title, "Dunmere");
    }

    function test_itsContentFillsIt() {
        const view = findChild(window.contentItem, "contentView");
        tryCompare(view, "width", window.width);
        tryCompare(view, "height", window.height);
        verify(Qt.colorEqual(window.color, AppTheme.canvas));
    }

    function test_keysCloseIt_data() {
        return [{ tag: "quit", key: Qt.Key_Q }, { tag: "close", key: Qt.Key_W }];
    }

    function test_keysCloseIt(data) {
        window.requestActivate();
        tryVerify(() => window.active);
        keyClick(data.key, Qt.ControlModifier);
        tryVerify(() => !window.visible);
    }
}
