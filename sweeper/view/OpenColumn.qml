import QtQuick
import Dunmere.Sweeper

// A column of the browser and the rule after it.
Row {
    id: column

    required property int index
    required property RowListModel rows
    required property string folderName

    signal rowActivated(row: int)
    signal leftRequested
    signal rightRequested
    signal keyboardUsed

    function takeKeyboard() {
        sweeperColumn.takeKeyboard();
    }

    SweeperColumn {
        id: sweeperColumn
        objectName: "sweeperColumn" + column.index
        height: column.height
        rows: column.rows
        folderName: column.folderName
        onRowActivated: row => column.rowActivated(row)
        onLeftRequested: column.leftRequested()
        onRightRequested: column.rightRequested()
        onKeyboardUsed: column.keyboardUsed()
    }
    ColumnDivider {
        height: column.height
    }
}
