import QtQuick
import Dunmere.Shell
import Dunmere.Theme

// The application's one window.
Window {
    id: root

    required property ContentModel content

    title: "Dunmere"
    color: AppTheme.canvas
    width: 1080
    height: 680
    minimumWidth: view.minimumContentWidth
    minimumHeight: view.minimumContentHeight
    visible: true

    ContentView {
        id: view
        anchors.fill: parent
        content: root.content
    }

    Shortcut {
        sequences: ["Ctrl+Q", "Ctrl+W"]
        onActivated: root.close()
    }
}
