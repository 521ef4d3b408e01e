pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Dunmere.Sweeper
import Dunmere.Theme

// The browser of a sweep: progress, the columns side by side, and the footer.
Item {
    id: root

    required property SweeperViewModel viewModel

    readonly property real minimumColumnHeight: 360
    /// The column that had the keyboard last: Tab stops there only, the arrow keys lead to the others.
    property int keyboardColumn: 0

    objectName: "browserChrome"

    Column {
        id: strip
        objectName: "statusStripArea"
        width: parent.width
        height: visible ? implicitHeight : 0
        visible: root.viewModel.showsStatusStrip

        StatusStrip {
            width: strip.width
            status: root.viewModel.statusStripText
        }
        Divider {
            objectName: "statusDivider"
            width: strip.width
        }
    }

    Rectangle {
        id: columnArea
        objectName: "columnArea"
        anchors.top: strip.bottom
        width: parent.width
        height: Math.max(root.minimumColumnHeight, root.height - strip.height - footerDivider.height - footer.height)
        color: AppTheme.card

        Flickable {
            id: scroller
            objectName: "columnScroller"
            anchors.fill: parent
            clip: true
            contentWidth: columnRow.width
            contentHeight: columnRow.height
            flickableDirection: Flickable.HorizontalFlick
            boundsBehavior: Flickable.StopAtBounds

            T.ScrollBar.horizontal: ScrollBar {
                id: horizontalBar
                objectName: "columnAreaScrollBar"
            }

            Row {
                id: columnRow
                objectName: "columnRow"
                // The bar takes its own space: it covers no row.
                height: Math.max(root.minimumColumnHeight, scroller.height - (horizontalBar.visible ? horizontalBar.height : 0))

                Repeater {
                    id: columnRepeater
                    model: root.viewModel.columns
                    onItemRemoved: (index, item) => {
                        if ((item as OpenColumn).column.holdsKeyboard)
                            root.takeKeyboard();
                    }

                    OpenColumn {
                        height: columnRow.height
                        isTabStop: index === Math.min(root.keyboardColumn, columnRepeater.count - 1)
                        column.onHoldsKeyboardChanged: if (column.holdsKeyboard)
                            root.keyboardColumn = index
                        onRowActivated: row => root.viewModel.selectRow(index, row)
                        onLeftRequested: root.columnAt(index - 1)?.comeBack()
                        onRightRequested: root.columnAt(index + 1)?.enter()
                        onKeyboardUsed: root.scrollTo(x, width)
                    }
                }
            }
        }

        // A mouse with one wheel scrolls sideways with Shift.
        Item {
            anchors.fill: parent

            WheelHandler {
                acceptedModifiers: Qt.ShiftModifier
                onWheel: event => root.scrollBy(-(event.angleDelta.y + event.angleDelta.x) / 120 * 56)
            }
        }
    }

    Divider {
        id: footerDivider
        objectName: "footerDivider"
        anchors.top: columnArea.bottom
        width: parent.width
    }
    FooterBar {
        id: footer
        anchors.top: footerDivider.bottom
        width: parent.width
        viewModel: root.viewModel
    }

    function takeKeyboard() {
        columnAt(Math.min(keyboardColumn, columnRepeater.count - 1))?.takeKeyboard();
    }

    function columnAt(index: int): SweeperColumn {
        return (columnRepeater.itemAt(index) as OpenColumn)?.column ?? null;
    }

    /// Scrolls as far as needed to see this span of the columns.
    function scrollTo(left: real, width: real) {
        scroller.contentX = Math.max(Math.min(scroller.contentX, left), left + width - scroller.width);
    }

    function scrollBy(distance: real) {
        const most = Math.max(0, scroller.contentWidth - scroller.width);
        scroller.contentX = Math.max(0, Math.min(most, scroller.contentX + distance));
    }
}
