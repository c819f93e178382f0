import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Panel

// The networks in range, and further actions.
ColumnLayout {
    id: page

    required property NetworkModel networks
    property bool scanning
    signal scanAsked
    signal hiddenAsked
    signal chosen(string networkId, string name, bool locked, bool saved, int stage)

    function takeFocus() {
        if (visible)
            list.forceActiveFocus()
    }

    spacing: Theme.gap

    RowLayout {
        Layout.leftMargin: 2 * Theme.margin
        Layout.rightMargin: Theme.margin

        Label {
            text: page.scanning ? "Looking around…" : "Networks"
            objectName: "listHeading"
            color: Theme.secondaryText
            font.pixelSize: Theme.smallSize
            font.weight: Font.DemiBold
            Layout.fillWidth: true
        }
        PanelButton {
            objectName: "scanButton"
            flat: true
            text: "Refresh"
            enabled: !page.scanning
            onClicked: page.scanAsked()
        }
    }
    Rectangle {
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.leftMargin: Theme.margin
        Layout.rightMargin: Theme.margin
        radius: Theme.radius
        color: Theme.card

        ListView {
            id: list
            objectName: "list"
            anchors.fill: parent
            anchors.margins: 4
            clip: true
            model: page.networks
            focus: true
            activeFocusOnTab: true
            keyNavigationEnabled: true
            ScrollBar.vertical: ScrollBar {}

            delegate: NetworkRow {
                width: ListView.view.width
                onClicked: {
                    list.currentIndex = index
                    page.chosen(networkId, name, locked, saved, stage)
                }
            }
            Keys.onReturnPressed: if (currentItem) currentItem.clicked()
            Keys.onEnterPressed: if (currentItem) currentItem.clicked()
            Keys.onSpacePressed: if (currentItem) currentItem.clicked()

            // The user pulled the list down far enough and released it.
            onDragEnded: if (contentY - originY < -Theme.touch) page.scanAsked()
        }
        Label {
            anchors.centerIn: parent
            visible: list.count === 0
            text: page.scanning ? "Looking around…" : "No networks in range"
            color: Theme.secondaryText
        }
    }
    PanelButton {
        objectName: "hiddenButton"
        text: "Join a hidden network"
        Layout.fillWidth: true
        Layout.leftMargin: Theme.margin
        Layout.rightMargin: Theme.margin
        Layout.bottomMargin: Theme.margin
        onClicked: page.hiddenAsked()
    }
}
