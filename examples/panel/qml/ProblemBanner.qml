import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Panel

// The last problem, until the user dismisses it or an action succeeds.
Rectangle {
    id: banner

    property alias text: label.text
    property bool canRetry
    signal retried
    signal dismissed

    visible: text !== ""
    implicitHeight: content.implicitHeight + 2 * Theme.gap
    radius: Theme.radius
    color: Theme.dangerGround

    ColumnLayout {
        id: content
        anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter }
        anchors.margins: Theme.margin
        spacing: 0

        Label {
            id: label
            objectName: "problem"
            color: Theme.danger
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            Layout.fillWidth: true
            Layout.topMargin: Theme.gap
            Accessible.role: Accessible.AlertMessage
        }
        RowLayout {
            Layout.alignment: Qt.AlignRight
            spacing: 0

            PanelButton {
                objectName: "retryButton"
                visible: banner.canRetry
                flat: true
                dangerous: true
                text: "Try again"
                onClicked: banner.retried()
            }
            PanelButton {
                objectName: "dismissButton"
                flat: true
                dangerous: true
                text: "Dismiss"
                onClicked: banner.dismissed()
            }
        }
    }
}
