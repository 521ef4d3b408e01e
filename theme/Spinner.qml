pragma ComponentBehavior: Bound

import QtQuick

// An indeterminate progress indicator: 16 × 16, eight spokes, the leading one dark and the others fading.
Item {
    id: root

    property bool running: true
    readonly property int spokes: 8
    property int leadingSpoke: 0

    objectName: "spinner"
    implicitWidth: 16
    implicitHeight: 16

    Accessible.role: Accessible.Animation
    Accessible.name: qsTr("Working")

    Timer {
        interval: 100
        repeat: true
        running: root.running && root.visible
        onTriggered: root.leadingSpoke = (root.leadingSpoke + 1) % root.spokes
    }

    Repeater {
        model: root.spokes

        Item {
            id: spoke
            required property int index
            readonly property int age: (root.leadingSpoke - index + root.spokes) % root.spokes

            anchors.fill: parent
            rotation: index * 360 / root.spokes
            opacity: 0.75 - 0.6 * age / (root.spokes - 1)

            Rectangle {
                anchors.horizontalCenter: parent.horizontalCenter
                y: 1
                width: 2
                height: 4.5
                radius: 1
                antialiasing: true
                color: AppTheme.primaryText
            }
        }
    }
}
