import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Panel

// A choice of several values, with its label.
ColumnLayout {
    id: root

    property alias label: label.text
    property alias options: box.model
    property alias index: box.currentIndex
    property alias boxName: box.objectName
    signal picked(int index)

    function takeFocus() { box.forceActiveFocus() }

    spacing: 4
    Layout.fillWidth: true
    Layout.preferredWidth: 1  // as wide as the fields beside it

    Label {
        id: label
        color: Theme.secondaryText
        font.pixelSize: Theme.smallSize
    }
    ComboBox {
        id: box
        Layout.fillWidth: true
        implicitHeight: Theme.touch
        leftPadding: 12
        Accessible.name: label.text
        onActivated: index => root.picked(index)

        background: Rectangle {
            radius: Theme.radius
            color: box.down ? Theme.pressed : "transparent"
            border { width: box.activeFocus ? 2 : 1; color: box.activeFocus ? Theme.accent : Theme.outline }
        }
        contentItem: Text {
            text: box.displayText
            font: box.font
            color: Theme.text
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
        }
        indicator: Item {
            x: box.width - 28
            width: 16
            height: box.height

            Rectangle { x: 1; y: parent.height / 2 - 1; width: 9; height: 2; rotation: 45; color: Theme.secondaryText }
            Rectangle { x: 7; y: parent.height / 2 - 1; width: 9; height: 2; rotation: -45; color: Theme.secondaryText }
        }
        delegate: ItemDelegate {
            required property var modelData
            required property int index
            width: ListView.view.width
            height: Theme.touch
            text: modelData
            highlighted: box.highlightedIndex === index
        }
        popup.background: Rectangle {
            radius: Theme.radius
            color: Theme.card
            border { width: 1; color: Theme.outline }
        }
    }
}
