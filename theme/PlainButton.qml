import QtQuick
import QtQuick.Templates as T
import Dunmere.Theme

// A button without decoration of its own: its text or another content, pressable over its whole rectangle. It dims as a
// whole while pressed or disabled, takes the focus by keyboard only, and then shows a thin ring.
T.AbstractButton {
    id: root

    /// Shown as a tooltip, and told to assistive technology.
    property string helpText
    /// False for a button whose container shows the disabled state otherwise.
    property bool dimsWhenDisabled: true
    property color titleColor: AppTheme.primaryText

    // Rounded up: texts have fractional widths, and the background's edge must not fall between pixels.
    implicitWidth: Math.ceil(implicitContentWidth) + leftPadding + rightPadding
    implicitHeight: Math.ceil(implicitContentHeight) + topPadding + bottomPadding
    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    font.pixelSize: 14
    opacity: !enabled ? (dimsWhenDisabled ? AppTheme.disabledOpacity : 1) : down ? AppTheme.pressedOpacity : 1

    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.description: helpText

    Keys.onReturnPressed: event => root.clickOnce(event)
    Keys.onEnterPressed: event => root.clickOnce(event)

    contentItem: AppText {
        objectName: "title"
        text: root.text
        color: root.titleColor
        font.pixelSize: root.font.pixelSize
        font.weight: root.font.weight
        horizontalAlignment: Text.AlignHCenter
        Accessible.ignored: true
    }

    /// A held key clicks once.
    function clickOnce(event: KeyEvent) {
        if (!event.isAutoRepeat)
            clicked();
    }

    FocusRing {
        objectName: "focusRing"
        anchors.margins: -2
        radius: AppTheme.cornerRadius + 2
        antialiasing: true
        visible: LastInput.isKeyboard && root.activeFocus
    }

    // In the parent, because a disabled button gets no hover events and has its help too.
    HoverHandler {
        id: pointer
        readonly property bool isOver: hovered && root.contains(root.mapFromItem(parent, point.position))
        parent: root.parent
        enabled: root.helpText.length > 0 && root.visible
        // After a press the tip stays away until the pointer comes back.
        onIsOverChanged: tip.dismissed = false
    }
    onPressed: tip.dismissed = true

    T.ToolTip {
        id: tip
        property bool dismissed: false
        objectName: "helpTip"
        x: 0
        y: root.height + 4
        implicitWidth: Math.ceil(implicitContentWidth) + leftPadding + rightPadding
        implicitHeight: Math.ceil(implicitContentHeight) + topPadding + bottomPadding
        margins: 6
        horizontalPadding: 8
        verticalPadding: 4
        delay: 1000
        closePolicy: T.Popup.NoAutoClose
        text: root.helpText
        visible: pointer.isOver && !dismissed

        contentItem: AppText {
            objectName: "helpTipText"
            text: tip.text
            font.pixelSize: 11
            Accessible.ignored: true
        }
        background: Rectangle {
            color: AppTheme.card
            border.color: AppTheme.border
            radius: 4
        }
    }
}
