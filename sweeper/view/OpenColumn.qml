import QtQuick
import Dunmere.Sweeper
import Dunmere.Theme

// A column of the browser and the line after it, which cannot be dragged.
Row {
    id: root

    required property int index
    required property RowListModel rows
    required property string folderName
    required property bool isReading
    required property bool isTabStop
    readonly property alias column: sweeperColumn

    signal rowActivated(row: int)
    signal leftRequested
    signal rightRequested
    signal keyboardUsed

    SweeperColumn {
        id: sweeperColumn
        objectName: "sweeperColumn" + root.index
        height: root.height
        rows: root.rows
        folderName: root.folderName
        isReading: root.isReading
        isTabStop: root.isTabStop
        onRowActivated: row => root.rowActivated(row)
        onLeftRequested: root.leftRequested()
        onRightRequested: root.rightRequested()
        onKeyboardUsed: root.keyboardUsed()
    }
    Divider {
        objectName: "columnDivider"
        height: root.height
        color: AppTheme.border
    }
}
