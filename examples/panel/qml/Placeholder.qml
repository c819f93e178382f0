import QtQuick
import QtQuick.Controls.Basic
import Panel

// Shown instead of the list while Wi-Fi is off or has not started.
Item {
    id: placeholder

    property bool on
    signal startAsked

    Column {
        anchors.centerIn: parent
        width: parent.width - 4 * Theme.margin
        spacing: Theme.gap

        Label {
            objectName: "placeholder"
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            color: Theme.text
            font.pixelSize: Theme.headingSize
            text: !placeholder.on ? "Wi-Fi is off" : patience.running ? "Wi-Fi is starting" : "Wi-Fi does not start"
        }
        Label {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            color: Theme.secondaryText
            text: !placeholder.on ? "Switch it on to see the networks around." : ""
            visible: text !== ""
        }
        PanelButton {
            objectName: "startButton"
            anchors.horizontalCenter: parent.horizontalCenter
            visible: placeholder.on && !patience.running
            text: "Try again"
            onClicked: {
                patience.restart()
                placeholder.startAsked()
            }
        }
    }
    Timer {
        id: patience
        objectName: "patience"
        interval: 10000
    }
    onVisibleChanged: if (visible) patience.restart()
    onOnChanged: if (on) patience.restart()
    Component.onCompleted: patience.restart()
}
