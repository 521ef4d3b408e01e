import QtQuick
import QtTest
import QtQuick.Templates as T
import Dunmere.Theme

Rectangle {
    id: stage
    width: 400
    height: 300
    color: AppTheme.canvas

    Divider {
        id: divider
        x: 10
        y: 10
        width: 100
    }
    Spinner {
        id: spinner
        x: 10
        y: 30
    }
    AppText {
        id: text
        x: 10
        y: 60
        text: "<b>not bold</b>"
    }
    SymbolIcon {
        id: icon
        x: 200
        y: 20
        systemImage: "folder"
        pixelSize: 18
        color: "#0000ff"
    }
    PlainButton {
        id: helped
        x: 200
        y: 100
        width: 80
        height: 30
        text: "Help"
        helpText: "What <i>it</i> does"
    }
    Flickable {
        id: scroller
        x: 300
        y: 10
        width: 50
        height: 100
        contentHeight: 400
        T.ScrollBar.vertical: ScrollBar {
            id: bar
        }
    }

    TestCase {
        name: "SmallItems"
        when: windowShown

        function init() {
            mouseMove(stage, 390, 290);
        }

        function test_aDividerIsOneThinLine() {
            compare(divider.height, 1);
            const image = grabImage(stage);
            compare(image.red(60, 9), 247);
            compare(image.red(60, 10), 222); // the canvas under a tenth of black
            compare(image.red(60, 11), 247);
        }

        function test_aSpinnerTurnsWhileItRuns() {
            compare(spinner.width, 16);
            compare(spinner.height, 16);
            const leading = spinner.leadingSpoke;
            tryVerify(() => spinner.leadingSpoke !== leading);
            spinner.running = false;
            const still = grabImage(spinner);
            wait(250);
            verify(grabImage(spinner).equals(still));
            spinner.running = true;
        }

        function test_textIsNeverMarkup() {
            compare(text.textFormat, Text.PlainText);
            compare(text.height, 17);
        }

        function test_aSymbolIsDrawnInItsColourAndSize() {
            compare(icon.width, 24);
            compare(icon.height, 22);
            const image = grabImage(stage);
            const drawn = (x, y) => image.blue(x, y) - image.red(x, y) > 100;
            const found = { left: 1000, right: 0, top: 1000, bottom: 0, count: 0 };
            for (let x = 190; x < 240; ++x) {
                for (let y = 10; y < 60; ++y) {
                    if (!drawn(x, y))
                        continue;
                    found.left = Math.min(found.left, x);
                    found.right = Math.max(found.right, x);
                    found.top = Math.min(found.top, y);
                    found.bottom = Math.max(found.bottom, y);
                    ++found.count;
                }
            }
            verify(found.count > 60, "drawn pixels: " + found.count);
            verify(found.left >= 200 && found.right < 224 && found.top >= 20 && found.bottom < 42, JSON.stringify(found));
            compare(found.left - 200, 223 - found.right);
        }

        function test_anUnknownSymbolIsWarnedAboutAndEmpty() {
            ignoreWarning("SymbolIcon: no symbol is named \"no.such\"");
            const unknown = createTemporaryQmlObject("import Dunmere.Theme; SymbolIcon { systemImage: 'no.such' }", stage);
            compare(unknown.implicitWidth, 0);
        }

        function test_aTipShowsOnHoverUntilThePress() {
            const tip = findChild(helped, "helpTip");
            compare(tip.delay, 1000);
            tip.delay = 0;
            mouseMove(helped, 10, 10);
            tryVerify(() => tip.opened);
            compare(findChild(tip.contentItem, "helpTipText") ?? tip.contentItem, tip.contentItem);
            compare(tip.contentItem.text, "What <i>it</i> does");
            compare(tip.contentItem.textFormat, Text.PlainText);
            mouseClick(helped, 10, 10);
            tryVerify(() => !tip.visible);
            mouseMove(stage, 390, 290);
            mouseMove(helped, 12, 12);
            tryVerify(() => tip.opened);
            tip.delay = 1000;
        }

        function test_aDisabledButtonHasItsTipToo() {
            const tip = findChild(helped, "helpTip");
            helped.enabled = false;
            tip.delay = 0;
            mouseMove(stage, helped.x - 1, helped.y + 10);
            wait(50);
            verify(!tip.visible);
            mouseMove(stage, helped.x + 1, helped.y + 10);
            tryVerify(() => tip.opened);
            mouseMove(stage, helped.x + helped.width + 1, helped.y + 10);
            tryVerify(() => !tip.visible);
            helped.enabled = true;
            tip.delay = 1000;
        }

        function test_helpIsToldToAssistiveTechnology() {
            compare(helped.Accessible.description, "What <i>it</i> does");
        }

        function test_aScrollBarShowsWhileThereIsSomethingToScroll() {
            verify(bar.visible);
            fuzzyCompare(bar.size, 0.25, 0.01);
            mouseDrag(bar, 5, 10, 0, 60);
            verify(scroller.contentY > 100);
            scroller.contentHeight = 50;
            verify(!bar.visible);
            scroller.contentHeight = 400;
        }
    }
}
