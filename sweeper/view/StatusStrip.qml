import QtQuick
import Dunmere.Theme

// The progress of a running scan.
Rectangle {
    id: root

    required property string status

    objectName: "statusStrip"
    implicitHeight: Math.max(spinner.height, label.height) + 16
    color: AppTheme.canvas

    Spinner {
        id: spinner
        objectName: "statusSpinner"
        x: 14
        width: implicitWidth
        height: implicitHeight
        anchors.verticalCenter: parent.verticalCenter
    }
    AppText {
        id: label
        objectName: "statusText"
        anchors.left: spinner.right
        anchors.leftMargin: 10
        anchors.right: parent.right
        anchors.rightMargin: 14
        anchors.verticalCenter: parent.verticalCenter
        text: root.status
        color: AppTheme.secondaryText
        font.pixelSize: 12
        wrapMode: Text.Wrap
        maximumLineCount: 2
        elide: Text.ElideRight
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
}
