import QtQuick
import QtQuick.Templates as T

// A button without decoration of its own: its content, pressable over its whole rectangle. It dims as a whole while
// pressed or disabled, takes the focus by keyboard only, and then shows a thin ring.
T.AbstractButton {
    id: root

    /// Shown as a tooltip, and told to assistive technology.
    property string helpText
    /// False for a button whose container shows the disabled state otherwise.
    property bool dimsWhenDisabled: true
    property real focusRingRadius: AppTheme.cornerRadius + 2

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    opacity: !enabled ? (dimsWhenDisabled ? AppTheme.disabledOpacity : 1) : down ? AppTheme.pressedOpacity : 1

    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.description: helpText

    Keys.onReturnPressed: event => root.clickOnce(event)
    Keys.onEnterPressed: event => root.clickOnce(event)

    /// A held key clicks once.
    function clickOnce(event: KeyEvent) {
        if (!event.isAutoRepeat)
            clicked();
    }

    Rectangle {
        objectName: "focusRing"
        anchors.fill: parent
        anchors.margins: -2
        radius: root.focusRingRadius
        color: "transparent"
        border.width: 2
        border.color: AppTheme.focusRing
        antialiasing: true
        visible: root.visualFocus
    }

    HelpTip {
        objectName: "helpTip"
        text: root.helpText
        visible: root.hovered && !root.down && text.length > 0
    }
}
