import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Panel

// Asks for the fields that the network's security needs. For a hidden network it also asks for name and security.
PanelDialog {
    id: dialog

    required property ConnectForm form

    readonly property bool enterprise: form.security === ConnectForm.Enterprise
    readonly property bool wide: enterprise && parent.width >= 640

    function methodNames(methods) { return methods.map(method => method === "" ? "Automatic" : method) }

    objectName: "connectDialog"
    title: form.hidden ? "Join a hidden network" : "Join “" + form.name + "”"
    acceptText: "Join"
    acceptEnabled: form.valid
    wanted: wide ? 720 : 420
    onAboutToShow: [ssid, identity, anonymous, password, caFile, domain].forEach(field => field.reset())
    onOpened: (form.hidden ? ssid : enterprise ? identity : password).takeFocus()
    onClosed: form.clear()

    Label {
        objectName: "obstacle"
        visible: text !== ""
        text: dialog.form.obstacle
        color: Theme.danger
        wrapMode: Text.Wrap
        font.pixelSize: Theme.smallSize
        Layout.fillWidth: true
    }
    Label {
        objectName: "nameProblem"
        visible: !dialog.form.hidden && text !== ""
        text: dialog.form.problemField === ConnectForm.SsidField ? dialog.form.problem : ""
        color: Theme.danger
        wrapMode: Text.Wrap
        font.pixelSize: Theme.smallSize
        Layout.fillWidth: true
    }
    GridLayout {
        columns: dialog.wide ? 2 : 1
        columnSpacing: Theme.margin
        rowSpacing: 12
        Layout.fillWidth: true

        PanelField {
            id: ssid
            fieldName: "ssidField"
            visible: dialog.form.hidden
            label: "Name"
            text: dialog.form.ssid
            problem: dialog.form.problemField === ConnectForm.SsidField ? dialog.form.problem : ""
            onEdited: text => dialog.form.ssid = text
            onSubmitted: dialog.accept()
        }
        PanelSelect {
            boxName: "securityBox"
            visible: dialog.form.hidden
            label: "Security"
            options: ["Open", "WEP", "WPA", "WPA2", "WPA3", "Enterprise"]
            index: dialog.form.security
            onPicked: index => dialog.form.security = index
        }
        PanelField {
            id: identity
            fieldName: "identityField"
            visible: dialog.enterprise
            label: "Identity"
            text: dialog.form.identity
            problem: dialog.form.problemField === ConnectForm.IdentityField ? dialog.form.problem : ""
            onEdited: text => dialog.form.identity = text
            onSubmitted: dialog.accept()
        }
        PanelField {
            id: password
            fieldName: "passwordField"
            visible: dialog.form.security !== ConnectForm.Open
            secret: true
            label: dialog.form.security === ConnectForm.Wep ? "Key" : "Password"
            text: dialog.form.password
            hint: dialog.form.passwordHint
            problem: dialog.form.problemField === ConnectForm.PasswordField ? dialog.form.problem : ""
            onEdited: text => dialog.form.password = text
            onSubmitted: dialog.accept()
        }
        PanelSelect {
            boxName: "methodBox"
            visible: dialog.enterprise
            label: "Method"
            options: dialog.methodNames(dialog.form.eapMethods)
            index: dialog.form.eapMethods.indexOf(dialog.form.eapMethod)
            onPicked: index => dialog.form.eapMethod = dialog.form.eapMethods[index]
        }
        PanelSelect {
            boxName: "phase2Box"
            visible: dialog.enterprise
            label: "Inner method"
            options: dialog.methodNames(dialog.form.phase2Methods)
            index: dialog.form.phase2Methods.indexOf(dialog.form.phase2Method)
            onPicked: index => dialog.form.phase2Method = dialog.form.phase2Methods[index]
        }
        PanelField {
            id: anonymous
            fieldName: "anonymousField"
            visible: dialog.enterprise
            label: "Anonymous identity (optional)"
            text: dialog.form.anonymousIdentity
            onEdited: text => dialog.form.anonymousIdentity = text
            onSubmitted: dialog.accept()
        }
        PanelField {
            id: caFile
            fieldName: "caFileField"
            visible: dialog.enterprise
            label: "CA certificate (file)"
            text: dialog.form.caFile
            problem: dialog.form.problemField === ConnectForm.CaFileField ? dialog.form.problem : ""
            onEdited: text => dialog.form.caFile = text
            onSubmitted: dialog.accept()
        }
        PanelField {
            id: domain
            fieldName: "domainField"
            visible: dialog.enterprise
            label: "Domain of the server"
            text: dialog.form.serverDomain
            problem: dialog.form.problemField === ConnectForm.DomainField ? dialog.form.problem : ""
            onEdited: text => dialog.form.serverDomain = text
            onSubmitted: dialog.accept()
        }
    }
    Label {
        objectName: "serverRemark"
        visible: text !== ""
        text: dialog.form.serverRemark
        color: Theme.secondaryText
        wrapMode: Text.Wrap
        font.pixelSize: Theme.smallSize
        Layout.fillWidth: true
    }
}
