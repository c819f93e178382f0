import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Panel

// The title, the theme button, and the Wi-Fi switch.
RowLayout {
    id: bar

    property bool on
    signal switched(bool checked)
    signal themeToggled

    spacing: Theme.gap

    Label {
        text: "Wi-Fi"
        color: Theme.text
        font.pixelSize: Theme.titleSize
        font.weight: Font.DemiBold
        Layout.fillWidth: true
        Layout.margins: Theme.margin
    }
    PanelButton {
        objectName: "themeButton"
        flat: true
        Accessible.name: Theme.dark ? "Light colours" : "Dark colours"
        implicitWidth: Theme.touch
        contentItem: Item {
            ThemeIcon { anchors.centerIn: parent }
        }
        onClicked: bar.themeToggled()
    }
    PanelSwitch {
        objectName: "onSwitch"
        Accessible.name: "Wi-Fi"
        Layout.rightMargin: Theme.margin
        checked: bar.on
        onToggled: bar.switched(checked)
    }
}
