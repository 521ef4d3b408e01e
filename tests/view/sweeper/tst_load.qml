import QtQuick
import QtTest
import Dunmere.Sweeper
import Dunmere.SweeperTest

// Every QML file of the module by itself: it loads, and without a warning.
TestCase {
    id: testCase

    name: "Load"
    when: windowShown
    visible: true
    width: 800
    height: 600

    SweeperHarness {
        id: harness
    }

    Component {
        id: browserChrome
        BrowserChrome {
            viewModel: harness.viewModel
        }
    }
    Component {
        id: diskSweeperPaneView
        DiskSweeperPaneView {
            viewModel: harness.viewModel
        }
    }
    Component {
        id: footerBar
        FooterBar {
            viewModel: harness.viewModel
        }
    }
    Component {
        id: sweeperColumn
        SweeperColumn {
            index: 0
            rows: testCase.anyRows()
            folderName: "root"
            isTabStop: true
            isReading: true
        }
    }
    Component {
        id: sweeperRow
        SweeperRow {
            index: 0
            name: "notes.txt"
            sizeText: "900 bytes"
            accessibleText: "notes.txt, file, 900 bytes"
            isDirectory: false
            isSymbolicLink: false
            isCompleteZero: false
            selected: false
            pressed: false
            showsFocus: false
        }
    }
    Component {
        id: trashConfirmation
        TrashConfirmation {
            viewModel: harness.viewModel
        }
    }
    Component {
        id: volumePicker
        VolumePicker {
            viewModel: harness.viewModel
        }
    }
    Component {
        id: volumeRow
        VolumeRow {
            index: 0
            name: "Backup"
            detailText: "1 TB free"
            selected: false
            listFocused: false
        }
    }

    function anyRows(): RowListModel {
        const columns = harness.viewModel.columns;
        return columns.data(columns.index(0, 0), Qt.UserRole + 1);
    }

    function init() {
        failOnWarning(/./);
        harness.restart();
        harness.addFile("/root/notes.txt", 900);
        harness.sweepFolder("/root");
    }

    function test_loads_data() {
        return [browserChrome, diskSweeperPaneView, footerBar, sweeperColumn, sweeperRow, trashConfirmation, volumePicker, volumeRow].map((component, index) => ({
                    tag: "component " + index,
                    component: component
                }));
    }

    function test_loads(data) {
        const loaded = createTemporaryObject(data.component, testCase);
        verify(loaded);
        loaded.width = 700;
        wait(20);
    }
}
