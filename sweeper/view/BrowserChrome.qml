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

        Rectangle {
            objectName: "statusStrip"
            width: strip.width
            height: Math.max(spinner.height, status.height) + 16
            color: AppTheme.canvas

            Spinner {
                id: spinner
                objectName: "statusSpinner"
                x: 14
                anchors.verticalCenter: parent.verticalCenter
            }
            AppText {
                id: status
                objectName: "statusText"
                anchors.left: spinner.right
                anchors.leftMargin: 10
                anchors.right: parent.right
                anchors.rightMargin: 14
                anchors.verticalCenter: parent.verticalCenter
                text: root.viewModel.statusStripText
                color: AppTheme.secondaryText
                font.pixelSize: 12
                wrapMode: Text.Wrap
                maximumLineCount: 2
                elide: Text.ElideRight
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
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
                // Room for the line after each column.
                spacing: 1
                rightPadding: 1

                Repeater {
                    id: columnRepeater
                    model: root.viewModel.columns
                    onItemRemoved: (index, item) => {
                        if ((item as SweeperColumn).holdsKeyboard)
                            root.takeKeyboard();
                    }

                    SweeperColumn {
                        height: columnRow.height
                        isTabStop: index === Math.min(root.keyboardColumn, columnRepeater.count - 1)
                        onHoldsKeyboardChanged: if (holdsKeyboard)
                            root.keyboardColumn = index
                        onRowActivated: row => root.viewModel.selectRow(index, row)
                        onLeftRequested: root.columnAt(index - 1)?.comeBack()
                        onRightRequested: root.columnAt(index + 1)?.enter()
                        onKeyboardUsed: root.scrollTo(x, width + columnRow.spacing)
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
        return columnRepeater.itemAt(index) as SweeperColumn;
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
