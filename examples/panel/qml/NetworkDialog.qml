import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Panel

// The actions for a network that is configured or in use.
PanelDialog {
    id: dialog

    property string networkId
    property string name
    property bool inUse
    signal joinAsked(string networkId)
    signal leaveAsked
    signal forgetAsked(string networkId, string name)

    function show(id, shownName, stage) {
        networkId = id
        name = shownName
        inUse = stage > 0
        open()
    }

    objectName: "networkDialog"
    title: name
    acceptText: inUse ? "Disconnect" : "Join"
    onOpened: focusAccept()
    onAccepted: inUse ? leaveAsked() : joinAsked(networkId)
    extraButtons: PanelButton {
        objectName: "forgetButton"
        flat: true
        dangerous: true
        text: "Forget"
        leftPadding: 0
        onClicked: {
            dialog.close()
            dialog.forgetAsked(dialog.networkId, dialog.name)
        }
    }

    Label {
        text: dialog.inUse ? "This network is in use." : "This network is saved: it is joined without asking."
        color: Theme.secondaryText
        wrapMode: Text.Wrap
        Layout.fillWidth: true
    }
}
