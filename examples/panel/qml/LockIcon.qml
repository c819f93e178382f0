import QtQuick
import Panel

Item {
    implicitWidth: 16
    implicitHeight: 20

    Rectangle {
        x: 3
        width: 10
        height: 16
        radius: 5
        color: "transparent"
        border { width: 2; color: Theme.secondaryText }
    }
    Rectangle {
        y: 9
        width: 16
        height: 11
        radius: 2
        color: Theme.secondaryText
    }
}
