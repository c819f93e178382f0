import QtQuick
import QtQuick.Controls.Basic
import Panel

// `flat`: only text. `prominent`: the action of Enter. `dangerous`: an action that cannot be undone.
Button {
    id: button

    property bool prominent
    property bool dangerous

    readonly property color ground: dangerous ? Theme.danger : Theme.accent

    implicitHeight: Theme.touch
    leftPadding: flat ? 12 : 20
    rightPadding: leftPadding
    opacity: enabled ? 1 : 0.45
    font.pixelSize: Theme.textSize
    font.weight: Font.Medium
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    contentItem: Text {
        text: button.text
        font: button.font
        color: button.prominent ? (button.dangerous ? Theme.dangerText : Theme.accentText) : button.ground
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }
    background: Rectangle {
        radius: Theme.radius
        color: button.prominent ? (button.down ? Qt.darker(button.ground, 1.15) : button.ground)
                                : (button.down ? Theme.pressed : "transparent")
        border { width: button.prominent || button.flat ? 0 : 1; color: Theme.outline }

        FocusRing {
            visible: button.visualFocus
            border.color: button.prominent ? Theme.text : Theme.accent
        }
    }
}
