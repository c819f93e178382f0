import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Panel

// A text field with its label, and below it a hint or an error. The error appears after the user typed or left the
// field.
ColumnLayout {
    id: root

    property alias label: label.text
    property alias text: field.text
    property alias fieldName: field.objectName
    property string hint
    property string problem
    property bool secret
    signal edited(string text)
    signal submitted

    readonly property bool wrong: problem !== "" && touched
    property bool touched

    function reset() {
        touched = false
        reveal.checked = false
    }
    function takeFocus() { field.forceActiveFocus() }

    spacing: 4
    Layout.fillWidth: true
    Layout.preferredWidth: 1  // as wide as the fields beside it

    Label {
        id: label
        color: root.wrong ? Theme.danger : Theme.secondaryText
        font.pixelSize: Theme.smallSize
    }
    TextField {
        id: field
        Layout.fillWidth: true
        implicitHeight: Theme.touch
        leftPadding: 12
        rightPadding: root.secret ? reveal.width + 4 : 12
        color: Theme.text
        selectByMouse: true
        echoMode: root.secret && !reveal.checked ? TextInput.Password : TextInput.Normal
        inputMethodHints: Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText | (root.secret ? Qt.ImhSensitiveData : 0)
        Accessible.name: label.text
        onTextEdited: {
            root.touched = true
            root.edited(text)
        }
        onActiveFocusChanged: if (!activeFocus && text !== "") root.touched = true
        onAccepted: root.submitted()

        background: Rectangle {
            radius: Theme.radius
            color: "transparent"
            border {
                width: field.activeFocus ? 2 : 1
                color: root.wrong ? Theme.danger : field.activeFocus ? Theme.accent : Theme.outline
            }
        }
        PanelButton {
            id: reveal
            objectName: root.fieldName + "Reveal"
            visible: root.secret
            anchors.right: parent.right
            flat: true
            checkable: true
            text: checked ? "Hide" : "Show"
        }
    }
    Label {
        objectName: root.fieldName + "Support"
        text: root.wrong ? root.problem : root.hint
        color: root.wrong ? Theme.danger : Theme.secondaryText
        font.pixelSize: Theme.smallSize
        wrapMode: Text.Wrap
        visible: text !== ""
        Layout.fillWidth: true
    }
}
