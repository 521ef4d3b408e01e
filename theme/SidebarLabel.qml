import QtQuick
import Dunmere.Theme

// Icon and title side by side, as the sidebar's rows and its "Drives…" button have them.
Item {
    id: root

    required property string title
    required property string systemImage
    property color iconColor: AppTheme.primaryText

    readonly property real spacing: 10

    implicitWidth: iconFrame.width + spacing + label.implicitWidth
    implicitHeight: Math.max(icon.implicitHeight, label.implicitHeight)

    Item {
        id: iconFrame
        objectName: "iconFrame"
        width: 18
        height: parent.height

        SymbolIcon {
            id: icon
            objectName: "icon"
            anchors.centerIn: parent
            systemImage: root.systemImage
            pixelSize: 14
            color: root.iconColor
        }
    }
    AppText {
        id: label
        objectName: "title"
        anchors.left: iconFrame.right
        anchors.leftMargin: root.spacing
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        text: root.title
        font.pixelSize: 14
        elide: Text.ElideRight
        Accessible.ignored: true
    }
}
