import QtQuick
import QtQuick.Templates as T
import Dunmere.Sweeper
import Dunmere.Theme

// The question before anything is moved to the Trash, over the whole window. Escape cancels; Return does nothing.
T.Dialog {
    id: root

    required property SweeperViewModel viewModel

    objectName: "trashConfirmation"
    title: viewModel.trashConfirmTitle
    parent: T.Overlay.overlay
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? Math.round((parent.height - height) / 2) : 0
    // As wide as an alert; wider for a long name, so that the card never outgrows the smallest window.
    width: Math.max(300, Math.min(900, title.length))
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    padding: 20
    modal: true
    focus: true
    closePolicy: T.Popup.CloseOnEscape
    visible: viewModel.confirmTrash

    // No button holds the keyboard until the user goes to one: a stray Space or Return must not answer the question.
    onAboutToShow: contentItem.forceActiveFocus()

    // Closed by Escape, not by a button.
    onClosed: {
        if (root.viewModel.confirmTrash)
            root.viewModel.dismissTrash();
    }

    T.Overlay.modal: Rectangle {
        objectName: "trashConfirmDim"
        color: AppTheme.behindQuestion
    }

    background: ContinuousRectangle {
        objectName: "trashConfirmCard"
        radius: 10
        color: AppTheme.card
        borderColor: AppTheme.border
        borderWidth: 1
    }

    contentItem: Column {
        objectName: "trashConfirmContent"
        spacing: 8

        AppText {
            objectName: "trashConfirmTitle"
            width: root.availableWidth
            space: 8
            text: root.title
            font.pixelSize: 13
            font.weight: Font.Bold
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        DunmereSecondaryButton {
            objectName: "trashConfirmMove"
            width: root.availableWidth
            title: qsTr("Move to Trash")
            titleColor: AppTheme.errorRed
            onClicked: root.viewModel.confirmedTrash()

            // Return does not press it, not even with the focus on it.
            function clickOnce(event: KeyEvent) {
            }
        }
        DunmereSecondaryButton {
            objectName: "trashConfirmCancel"
            width: root.availableWidth
            title: qsTr("Cancel")
            onClicked: root.viewModel.dismissTrash()
        }
    }
}
