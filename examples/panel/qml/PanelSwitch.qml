import QtQuick
import QtQuick.Controls.Basic
import Panel

Switch {
    id: control

    implicitWidth: 64
    implicitHeight: Theme.touch
    padding: 4
    Keys.onReturnPressed: { toggle(); toggled() }

    indicator: Rectangle {
        anchors.centerIn: parent
        width: 56
        height: 32
        radius: 16
        color: control.checked ? Theme.accent : "transparent"
        border { width: 2; color: control.checked ? Theme.accent : Theme.outline }

        Rectangle {
            x: control.checked ? parent.width - width - 5 : 5
            anchors.verticalCenter: parent.verticalCenter
            width: 22
            height: 22
            radius: 11
            color: control.checked ? Theme.accentText : Theme.outline
            Behavior on x { NumberAnimation { duration: 100 } }
        }
        FocusRing {
            visible: control.visualFocus
            anchors.margins: -4
            radius: 20
            border.color: Theme.text
        }
    }
}
