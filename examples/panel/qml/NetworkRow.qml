import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Panel

// One network of the list.
ItemDelegate {
    id: row

    required property int index
    required property string networkId
    required property string name
    required property int bars
    required property string security
    required property bool locked
    required property bool saved
    required property int stage

    objectName: "row:" + name
    implicitHeight: 68
    focusPolicy: Qt.NoFocus  // the list has the focus
    Accessible.name: name + ", " + detail.text

    contentItem: RowLayout {
        spacing: Theme.margin

        SignalBars {
            bars: row.bars
            Layout.alignment: Qt.AlignVCenter
        }
        ColumnLayout {
            spacing: 3

            Label {
                objectName: "name"
                text: row.name
                textFormat: Text.PlainText
                elide: Text.ElideRight
                color: Theme.text
                font.pixelSize: Theme.textSize
                font.weight: row.stage > 0 ? Font.DemiBold : Font.Normal
                Layout.fillWidth: true
            }
            Label {
                id: detail
                objectName: "detail"
                text: ["", "Joining…", "Getting an address…", "Connected"][row.stage]
                      || row.security + (row.saved ? " · Saved" : "")
                elide: Text.ElideRight
                color: row.stage > 0 ? Theme.accent : Theme.secondaryText
                font.pixelSize: Theme.smallSize
                Layout.fillWidth: true
            }
            StageBar {
                visible: row.stage === 1 || row.stage === 2
                stage: row.stage
                Layout.fillWidth: true
                Layout.topMargin: 2
            }
        }
        LockIcon {
            visible: row.locked
            Layout.alignment: Qt.AlignVCenter
        }
    }
    background: Rectangle {
        color: row.down ? Theme.pressed : "transparent"
        radius: Theme.radius

        Rectangle {
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom; leftMargin: 57 }
            height: 1
            color: Theme.line
            visible: row.ListView.view !== null && row.index < row.ListView.view.count - 1
        }
        FocusRing {
            anchors.margins: 2
            radius: Theme.radius
            visible: row.ListView.isCurrentItem && row.ListView.view.activeFocus
        }
    }
}
