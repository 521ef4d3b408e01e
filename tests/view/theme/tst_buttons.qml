import QtQuick
import QtTest
import Dunmere.Theme

Rectangle {
    id: stage
    width: 500
    height: 160
    color: AppTheme.canvas

    DunmerePrimaryButton {
        id: neutral
        x: 20
        y: 20
        title: "Sweep"
    }
    DunmerePrimaryButton {
        id: accent
        x: 160
        y: 20
        title: "Sweep"
        style: DunmerePrimaryButton.Style.Accent
    }
    DunmereSecondaryButton {
        id: secondary
        x: 20
        y: 80
        title: "Sweep"
    }
    DunmereSecondaryButton {
        id: markup
        x: 160
        y: 80
        title: "<b>R&D</b> & more"
    }
    SignalSpy {
        id: clicks
        signalName: "clicked"
    }

    TestCase {
        name: "Buttons"
        when: windowShown

        function init() {
            neutral.enabled = true;
            secondary.enabled = true;
            stage.forceActiveFocus();
            clicks.target = null;
            clicks.clear();
        }

        function watch(button) {
            clicks.target = button;
            clicks.clear();
        }

        function pixel(x, y) {
            return grabImage(stage).pixel(x, y);
        }

        function test_padding_data() {
            return [
                { tag: "primary", button: neutral, horizontal: 18, vertical: 10, weight: Font.DemiBold },
                { tag: "secondary", button: secondary, horizontal: 14, vertical: 8, weight: Font.Medium }
            ];
        }

        function test_padding(data) {
            const title = findChild(data.button, "title");
            const place = title.mapToItem(data.button, 0, 0);
            compare(place.x, data.horizontal);
            compare(place.y, data.vertical);
            compare(data.button.width, Math.ceil(title.implicitWidth) + 2 * data.horizontal);
            compare(data.button.height, 17 + 2 * data.vertical);
            compare(title.font.pixelSize, 14);
            compare(title.font.weight, data.weight);
        }

        function test_thePrimaryButtonIsLargerWithTheSameTitle() {
            verify(neutral.width > secondary.width);
            compare(neutral.height - secondary.height, 4);
        }

        function test_colours() {
            verify(Qt.colorEqual(findChild(neutral, "title").color, AppTheme.card));
            verify(Qt.colorEqual(findChild(secondary, "title").color, AppTheme.primaryText));
            verify(Qt.colorEqual(findChild(neutral, "background").color, AppTheme.accentOrange));
            verify(Qt.colorEqual(findChild(accent, "background").color, AppTheme.accentOrangeDeep));
            verify(Qt.colorEqual(findChild(secondary, "background").color, AppTheme.card));
            verify(Qt.colorEqual(findChild(secondary, "background").borderColor, AppTheme.border));
            compare(findChild(secondary, "background").borderWidth, 1);
            compare(findChild(neutral, "background").borderWidth, 0);
        }

        function test_drawnColours() {
            const image = grabImage(stage);
            compare(image.red(neutral.x + 6, neutral.y + 18), 240);
            compare(image.green(neutral.x + 6, neutral.y + 18), 90);
            compare(image.blue(neutral.x + 6, neutral.y + 18), 40);
            compare(image.red(accent.x + 6, accent.y + 18), 217);
            compare(image.green(accent.x + 6, accent.y + 18), 74);
            compare(image.blue(accent.x + 6, accent.y + 18), 31);
            compare(image.red(secondary.x + 6, secondary.y + 16), 255);
        }

        function test_theAccentStyleIsDarker() {
            const image = grabImage(stage);
            const at = button => [button.x + 6, button.y + 18];
            verify(image.red(...at(accent)) < image.red(...at(neutral)));
            verify(image.green(...at(accent)) < image.green(...at(neutral)));
            verify(image.blue(...at(accent)) < image.blue(...at(neutral)));
        }

        function test_theOutlineIsOneWholePixelInsideTheButton() {
            const image = grabImage(stage);
            const middle = secondary.y + 16;
            compare(image.red(secondary.x - 1, middle), 247);
            compare(image.red(secondary.x, middle), 230); // 0.9
            compare(image.red(secondary.x + 1, middle), 255);
            const right = secondary.x + secondary.width - 1;
            compare(image.red(right, middle), 230);
            compare(image.red(right + 1, middle), 247);
        }

        function test_theCornersAreRound_data() {
            return [{ tag: "primary", button: neutral }, { tag: "secondary", button: secondary }];
        }

        function test_theCornersAreRound(data) {
            const image = grabImage(stage);
            const right = data.button.x + data.button.width - 1;
            const bottom = data.button.y + data.button.height - 1;
            for (const x of [data.button.x, right])
                for (const y of [data.button.y, bottom])
                    compare(image.red(x, y), 247);
            verify(findChild(data.button, "background").radius === 8);
        }

        function test_aTitleIsShownVerbatim() {
            const title = findChild(markup, "title");
            compare(title.text, "<b>R&D</b> & more");
            compare(title.textFormat, Text.PlainText);
            compare(markup.Accessible.name, "<b>R&D</b> & more");
        }

        function test_aClickAnywhereRunsTheActionOnce_data() {
            return [
                { tag: "top left", x: 1, y: 1 },
                { tag: "bottom right", x: neutral.width - 1, y: neutral.height - 1 },
                { tag: "on the title", x: neutral.width / 2, y: neutral.height / 2 }
            ];
        }

        function test_aClickAnywhereRunsTheActionOnce(data) {
            watch(neutral);
            mouseClick(neutral, data.x, data.y);
            compare(clicks.count, 1);
        }

        function test_aReleaseOutsideRunsNothing() {
            watch(neutral);
            mousePress(neutral, 10, 10);
            mouseMove(stage, 400, 150);
            mouseRelease(stage, 400, 150);
            compare(clicks.count, 0);
        }

        function test_thePointerOverAButtonChangesNothing() {
            mouseMove(stage, 490, 150);
            const before = grabImage(stage);
            mouseMove(neutral, 10, 10);
            verify(grabImage(stage).equals(before));
            mouseMove(secondary, 10, 10);
            verify(grabImage(stage).equals(before));
        }

        function test_dimsWhilePressed() {
            mousePress(neutral, 10, 10);
            compare(neutral.opacity, 0.75);
            mouseRelease(neutral, 10, 10);
            compare(neutral.opacity, 1);
        }

        function test_aDisabledButtonDimsAndRunsNothing() {
            watch(neutral);
            neutral.enabled = false;
            compare(neutral.opacity, 0.5);
            mouseClick(neutral, 10, 10);
            compare(clicks.count, 0);
        }

        function test_keysRunTheAction_data() {
            return [
                { tag: "Space", key: Qt.Key_Space },
                { tag: "Return", key: Qt.Key_Return },
                { tag: "Enter", key: Qt.Key_Enter }
            ];
        }

        function test_keysRunTheAction(data) {
            neutral.forceActiveFocus(Qt.TabFocusReason);
            watch(neutral);
            keyClick(data.key);
            compare(clicks.count, 1);
        }

        function test_theFocusRingShowsForTheKeyboardOnly() {
            const ring = findChild(secondary, "focusRing");
            verify(!ring.visible);
            mouseClick(secondary, 10, 10);
            verify(!ring.visible);
            verify(!secondary.activeFocus);
            secondary.forceActiveFocus();
            verify(!ring.visible);
            keyClick(Qt.Key_A);
            verify(ring.visible);
        }

        function test_isAButtonToAssistiveTechnology() {
            compare(neutral.Accessible.role, Accessible.Button);
            compare(neutral.Accessible.name, "Sweep");
        }
    }
}
