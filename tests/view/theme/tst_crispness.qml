import QtQuick
import QtTest
import Dunmere.Theme

// Run once for each scale of the screen. Most places are multiples of 4: whole pixels at any scale.
// A grabbed image has as many pixels as its item has points: the things stand in the quarter that it holds at 2.
Rectangle {
    id: stage
    width: 640
    height: 240
    color: AppTheme.canvas

    Divider {
        id: horizontal
        x: 20
        y: 8
        width: 40
    }
    Divider {
        id: vertical
        x: 8
        y: 20
        height: 40
    }
    // Wherever they stand.
    Repeater {
        id: verticals
        model: 8

        Divider {
            required property int index
            x: 8 + index * 5
            y: 84
            height: 20
        }
    }
    Repeater {
        id: horizontals
        model: 8

        Divider {
            required property int index
            x: 60
            y: 80 + index * 5
            width: 20
        }
    }
    ContinuousRectangle {
        id: outlined
        x: 40
        y: 40
        width: 120
        height: 32
        radius: 8
        color: AppTheme.card
        borderColor: AppTheme.border
        borderWidth: 1
    }
    ContinuousRectangle {
        id: filled
        x: 180
        y: 40
        width: 120
        height: 32
        radius: 4
        color: AppTheme.accentOrange
    }
    SymbolIcon {
        id: icon
        x: 200
        y: 4
        systemImage: "rectangle.split.3x1"
        pixelSize: 16
        color: "#000000"
    }

    TestCase {
        name: "Crispness"
        when: windowShown

        readonly property real scale: Screen.devicePixelRatio
        readonly property int line: Math.round(scale) // how many pixels of the screen a line one point wide is

        property var image

        function init() {
            image = grabImage(stage);
        }

        // Red values of the screen's pixels on a line through the stage, from one point to another.
        function across(x, y, dx, dy, count) {
            const values = [];
            for (let i = 0; i < count; ++i)
                values.push(image.red(Math.round(x * scale) + dx * i, Math.round(y * scale) + dy * i));
            return values;
        }

        function times(value, count) {
            return Array(count).fill(value);
        }

        function test_dividersAreOneLineOfWholePixels() {
            compare(across(40, 8, 0, 1, line + 1), [...times(222, line), 247]);
            compare(across(8, 40, 1, 0, line + 1), [...times(222, line), 247]);
        }

        function test_dividersAreEquallyThickWhereverTheyStand() {
            const row = across(4, 94, 1, 0, Math.round(48 * scale));
            compare(row.filter(red => red === 222).length, 8 * line);
            const column = across(70, 76, 0, 1, Math.round(44 * scale));
            compare(column.filter(red => red === 222).length, 8 * line);
        }

        function test_anOutlineIsOneLineOfWholePixels() {
            compare(across(40, 56, 1, 0, line + 2), [...times(230, line), 255, 255]);
            compare(across(100, 40, 0, 1, line + 2), [...times(230, line), 255, 255]);
            compare(across(160, 56, -1, 0, line + 3), [247, ...times(230, line), 255, 255]);
            compare(across(100, 72, 0, -1, line + 3), [247, ...times(230, line), 255, 255]);
        }

        function test_aFillEndsOnAWholePixel() {
            compare(across(180, 56, -1, 0, 2), [240, 247]);
            compare(across(300, 56, -1, 0, 2), [247, 240]);
            compare(across(240, 40, 0, -1, 2), [240, 247]);
        }

        function test_aSymbolsStraightStrokesAreBlack() {
            const middle = across(icon.x, icon.y + icon.height / 2, 1, 0, Math.round(icon.width * scale));
            verify(middle.filter(red => red < 8).length >= 4, JSON.stringify(middle));
        }
    }
}
