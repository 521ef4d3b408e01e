import QtQuick
import QtTest
import Dunmere.Theme

Rectangle {
    id: stage
    width: 300
    height: 100
    color: AppTheme.canvas

    SidebarRow {
        id: row
        x: 12
        y: 16
        width: 196
        title: "Settings"
        systemImage: "slider.horizontal.3"
        isSelected: false
    }
    SignalSpy {
        id: clicks
        target: row
        signalName: "clicked"
    }

    TestCase {
        name: "SidebarRow"
        when: windowShown

        function init() {
            row.isSelected = false;
            clicks.clear();
        }

        function look() {
            const title = findChild(row, "title");
            const place = title.mapToItem(row, 0, 0);
            return JSON.stringify([String(title.color), title.font.pixelSize, title.font.weight, title.text, place.x,
                place.y, row.width, row.height]);
        }

        function test_layout() {
            const frame = findChild(row, "iconFrame");
            const icon = findChild(row, "icon");
            const title = findChild(row, "title");
            compare(row.height, 8 + 17 + 8);
            compare(frame.mapToItem(row, 0, 0).x, 10);
            compare(frame.width, 18);
            compare(title.mapToItem(row, 0, 0).x, 10 + 18 + 10);
            compare(title.mapToItem(row, 0, 0).y, 8);
            compare(title.font.pixelSize, 14);
            compare(title.font.weight, Font.Normal);
            compare(icon.pixelSize, 14);
            compare(icon.weight, Font.Normal);
            compare(icon.systemImage, "slider.horizontal.3");
            const iconCentre = icon.mapToItem(row, icon.width / 2, icon.height / 2);
            compare(iconCentre.x, 10 + 9);
            fuzzyCompare(iconCentre.y, row.height / 2, 0.5);
        }

        function test_selectionChangesTheIconsColourAndTheBackgroundOnly() {
            const before = look();
            const icon = findChild(row, "icon");
            const background = findChild(row, "background");
            verify(Qt.colorEqual(icon.color, AppTheme.primaryText));
            compare(background.color.a, 0);
            row.isSelected = true;
            compare(look(), before);
            verify(Qt.colorEqual(icon.color, AppTheme.accentTint));
            verify(Qt.colorEqual(background.color, AppTheme.sidebarSelectionFill));
            compare(background.radius, 8);
        }

        function test_drawnBackground() {
            compare(grabImage(stage).red(row.x + 150, row.y + 16), 247);
            row.isSelected = true;
            const image = grabImage(stage);
            compare(image.red(row.x + 150, row.y + 16), 237); // 0.93
            compare(image.red(row.x, row.y), 247); // the round corner
        }

        function test_drawnIcon() {
            const orange = (image, x, y) => image.red(x, y) > image.blue(x, y) + 40;
            const orangePixels = () => {
                const image = grabImage(stage);
                let count = 0;
                for (let x = row.x + 10; x < row.x + 28; ++x)
                    for (let y = row.y; y < row.y + row.height; ++y)
                        count += orange(image, x, y) ? 1 : 0;
                return count;
            };
            compare(orangePixels(), 0);
            row.isSelected = true;
            verify(orangePixels() > 20);
        }

        function test_aClickInTheEmptySpaceRightOfTheTitleCounts() {
            const title = findChild(row, "title");
            const x = title.mapToItem(row, title.contentWidth, 0).x + 40;
            verify(x < row.width - 20);
            mouseClick(row, x, row.height / 2);
            compare(clicks.count, 1);
            mouseClick(row, row.width - 1, 1);
            compare(clicks.count, 2);
        }

        function test_tellsItsSelectionToAssistiveTechnology() {
            compare(row.Accessible.role, Accessible.Button);
            compare(row.Accessible.name, "Settings");
            verify(!row.Accessible.selected);
            row.isSelected = true;
            verify(row.Accessible.selected);
        }
    }
}
