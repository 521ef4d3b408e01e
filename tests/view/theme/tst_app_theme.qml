import QtQuick
import QtTest
import Dunmere.Theme

TestCase {
    name: "AppTheme"

    function test_palette_data() {
        return [
            { tag: "accentOrange", red: 240 / 255, green: 90 / 255, blue: 40 / 255 },
            { tag: "accentOrangeDeep", red: 217 / 255, green: 74 / 255, blue: 31 / 255 },
            { tag: "accentTint", red: 240 / 255, green: 90 / 255, blue: 40 / 255 },
            { tag: "canvas", red: 247 / 255, green: 247 / 255, blue: 247 / 255 },
            { tag: "card", red: 1, green: 1, blue: 1 },
            { tag: "border", red: 0.9, green: 0.9, blue: 0.9 },
            { tag: "primaryText", red: 0, green: 0, blue: 0 },
            { tag: "secondaryText", red: 0.443, green: 0.443, blue: 0.443 },
            { tag: "mutedLabel", red: 0.55, green: 0.55, blue: 0.55 },
            { tag: "sidebarSelection", red: 0.93, green: 0.93, blue: 0.93 },
            { tag: "sidebarSelectionFill", red: 0.93, green: 0.93, blue: 0.93 },
            { tag: "inputFill", red: 0.96, green: 0.96, blue: 0.96 }
        ];
    }

    // Colours keep 16 bits for each component.
    function test_palette(data) {
        const color = AppTheme[data.tag];
        fuzzyCompare(color.r, data.red, 1 / 65535);
        fuzzyCompare(color.g, data.green, 1 / 65535);
        fuzzyCompare(color.b, data.blue, 1 / 65535);
        compare(color.a, 1);
    }

    function test_lineHeight_data() {
        return [
            { tag: "10", height: 13 },
            { tag: "11", height: 14 },
            { tag: "12", height: 15 },
            { tag: "13", height: 16 },
            { tag: "14", height: 17 },
            { tag: "18", height: 22 },
            { tag: "20", height: 24 },
            { tag: "28", height: 33 }
        ];
    }

    function test_lineHeight(data) {
        compare(AppTheme.lineHeight(Number(data.tag)), data.height);
    }
}
