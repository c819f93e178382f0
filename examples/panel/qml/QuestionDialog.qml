import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Panel

// Asks for confirmation before an action on a network.
PanelDialog {
    id: dialog

    property string networkId
    property string name
    property string text

    function ask(id, shownName) {
        networkId = id
        name = shownName
        open()
    }
    onOpened: focusAccept()

    Label {
        text: dialog.text
        color: Theme.secondaryText
        wrapMode: Text.Wrap
        Layout.fillWidth: true
    }
}
