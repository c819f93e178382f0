import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Panel

ApplicationWindow {
    id: window

    required property WifiPanel panel
    property alias theme: themeChoice.value

    width: 480
    height: 800
    minimumWidth: 360
    minimumHeight: 480
    visible: true
    title: "Wi-Fi"
    color: Theme.background
    font.pixelSize: Theme.textSize
    palette {
        window: Theme.background
        windowText: Theme.text
        base: Theme.card
        text: Theme.text
        button: Theme.card
        buttonText: Theme.text
        highlight: Theme.accent
        highlightedText: Theme.accentText
        placeholderText: Theme.secondaryText
        light: Theme.pressed
        midlight: Theme.pressed
        mid: Theme.outline
        dark: Theme.outline
    }

    Binding {
        id: themeChoice
        target: Theme
        property: "choice"
        value: "system"
    }

    // Tapping an open network asks for confirmation, a configured one opens its dialog, and any other one opens the
    // connect dialog.
    function choose(networkId, name, locked, saved, stage) {
        if (saved || stage > 0) {
            networkDialog.show(networkId, name, stage)
        } else if (!locked) {
            openQuestion.ask(networkId, name)
        } else if (panel.prepare(networkId)) {
            connectDialog.open()
        }
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        HeaderBar {
            Layout.fillWidth: true
            on: window.panel.on
            onSwitched: checked => window.panel.on = checked
            onThemeToggled: window.theme = Theme.dark ? "light" : "dark"
        }
        ProblemBanner {
            Layout.fillWidth: true
            Layout.leftMargin: Theme.margin
            Layout.rightMargin: Theme.margin
            Layout.bottomMargin: Theme.gap
            text: window.panel.problem
            canRetry: window.panel.problemId !== ""
            onRetried: {
                if (window.panel.prepare(window.panel.problemId))
                    connectDialog.open()
            }
            onDismissed: window.panel.dismissProblem()
        }
        NetworkList {
            id: list
            visible: window.panel.on && window.panel.running
            Layout.fillWidth: true
            Layout.fillHeight: true
            networks: window.panel.networks
            scanning: window.panel.scanning
            onScanAsked: window.panel.scan()
            onHiddenAsked: {
                window.panel.prepareHidden()
                connectDialog.open()
            }
            onChosen: (networkId, name, locked, saved, stage) => window.choose(networkId, name, locked, saved, stage)
        }
        Placeholder {
            visible: !list.visible
            Layout.fillWidth: true
            Layout.fillHeight: true
            on: window.panel.on
            onStartAsked: window.panel.on = true
        }
    }

    ConnectDialog {
        id: connectDialog
        form: window.panel.form
        onAccepted: window.panel.submit()
        onClosed: list.takeFocus()
    }
    NetworkDialog {
        id: networkDialog
        onJoinAsked: networkId => window.panel.joinSaved(networkId)
        onLeaveAsked: window.panel.leave()
        onForgetAsked: (networkId, name) => forgetQuestion.ask(networkId, name)
        onClosed: list.takeFocus()
    }
    QuestionDialog {
        id: openQuestion
        objectName: "openQuestion"
        title: "Join “" + name + "”?"
        text: "This network is open: others nearby can read what is sent without encryption of its own."
        acceptText: "Join"
        onAccepted: {
            if (window.panel.prepare(networkId))
                window.panel.submit()
        }
        onClosed: list.takeFocus()
    }
    QuestionDialog {
        id: forgetQuestion
        objectName: "forgetQuestion"
        title: "Forget “" + name + "”?"
        text: "Its saved settings will be removed, the password among them."
        acceptText: "Forget"
        dangerous: true
        onAccepted: window.panel.forget(networkId)
        onClosed: list.takeFocus()
    }
}
