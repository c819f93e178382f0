import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import QtQuick.Templates as T
import Panel

// A title, a body that scrolls if it is too long, and two buttons. Esc closes it; Enter accepts in any field.
Popup {
    id: dialog

    property alias title: title.text
    property string acceptText
    property bool acceptEnabled: true
    property bool dangerous
    property int wanted: 420  // the width, if there is room
    default property alias body: body.data
    property alias extraButtons: extras.data
    signal accepted

    function accept() {
        if (acceptEnabled) {
            accepted()
            close()
        }
    }
    function focusAccept() { acceptButton.forceActiveFocus(Qt.TabFocusReason) }

    parent: T.Overlay.overlay
    x: Math.round((parent.width - width) / 2)
    y: Math.round((parent.height - height) / 2)
    width: Math.min(parent.width - 2 * Theme.margin, wanted)
    height: Math.min(parent.height - 2 * Theme.margin, implicitHeight)
    padding: 24
    bottomPadding: Theme.margin
    modal: true
    focus: true
    T.Overlay.modal: Rectangle { color: Theme.dim }
    background: Rectangle {
        radius: 20
        color: Theme.card
    }

    contentItem: ColumnLayout {
        spacing: Theme.margin

        Label {
            id: title
            textFormat: Text.PlainText
            color: Theme.text
            font.pixelSize: Theme.headingSize
            font.weight: Font.DemiBold
            wrapMode: Text.Wrap
            maximumLineCount: 2
            elide: Text.ElideRight
            Layout.fillWidth: true
        }
        Flickable {
            id: flick
            Layout.fillWidth: true
            Layout.fillHeight: true
            implicitHeight: body.implicitHeight
            contentHeight: body.implicitHeight
            clip: contentHeight > height
            interactive: contentHeight > height
            boundsBehavior: Flickable.StopAtBounds
            ScrollBar.vertical: ScrollBar {}

            ColumnLayout {
                id: body
                width: flick.width
                spacing: 12
            }
        }
        RowLayout {
            spacing: Theme.gap

            RowLayout { id: extras }
            Item { Layout.fillWidth: true }
            PanelButton {
                objectName: "cancelButton"
                flat: true
                text: "Cancel"
                onClicked: dialog.close()
            }
            PanelButton {
                id: acceptButton
                objectName: "acceptButton"
                visible: text !== ""
                prominent: true
                dangerous: dialog.dangerous
                text: dialog.acceptText
                enabled: dialog.acceptEnabled
                onClicked: dialog.accept()
            }
        }
    }
}
