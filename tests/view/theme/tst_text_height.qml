import QtQuick
import QtTest
import Dunmere.Theme

// A text is as high as its lines, whatever font draws them: the same file is run with several.
Item {
    id: root

    width: 400
    height: 300

    Component {
        id: textComponent
        AppText {
            width: 120
        }
    }
    FontMetrics {
        id: metrics
        font.pixelSize: 20
    }
    TextMetrics {
        id: narrow
        text: "i,"
        font.pixelSize: 20
    }

    TestCase {
        name: "TextHeight"
        when: windowShown

        function text(properties) {
            return createTemporaryObject(textComponent, root, properties);
        }

        // Without any font Qt draws boxes, and everything here would hold.
        function test_thereIsAFont() {
            verify(metrics.averageCharacterWidth < 15);
            verify(narrow.tightBoundingRect.width < 20);
        }

        function test_oneLine_data() {
            return [10, 11, 12, 13, 14, 18, 20, 28].map(size => ({ tag: String(size), size: size }));
        }

        function test_oneLine(data) {
            const line = text({ text: "Agfj", "font.pixelSize": data.size });
            compare(line.implicitHeight, AppTheme.lineHeight(data.size));
            compare(line.height, AppTheme.lineHeight(data.size));
        }

        function test_noText() {
            compare(text({ text: "", "font.pixelSize": 13 }).height, 16);
        }

        function test_severalLines() {
            const lines = text({ text: "one\ntwo\nthree", "font.pixelSize": 12 });
            compare(lines.height, 3 * 15);
            lines.text = "one";
            compare(lines.height, 15);
            lines.font.pixelSize = 14;
            compare(lines.height, 17);
        }

        function test_cutToTwoLines() {
            const words = text({ text: "word ".repeat(40), wrapMode: Text.Wrap, maximumLineCount: 2, elide: Text.ElideRight });
            verify(words.truncated);
            compare(words.height, 2 * 17);
        }

        function test_spaceBelow() {
            compare(text({ text: "one\ntwo", space: 8 }).height, 2 * 17 + 8);
        }

        // What a font needs above and below its letters goes over the edges by the same amount.
        function test_lettersStandInTheMiddle() {
            const line = text({ text: "x" });
            verify(line.baselineOffset > 17 / 2 && line.baselineOffset < 17 + 2, "the baseline is at " + line.baselineOffset);
        }
    }
}
