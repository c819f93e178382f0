import QtQuick
import Panel

// A disc, half filled.
Rectangle {
    implicitWidth: 22
    implicitHeight: 22
    radius: 11
    color: "transparent"
    border { width: 2; color: Theme.text }

    Item {
        x: 11
        width: 11
        height: 22
        clip: true

        Rectangle {
            x: -11
            width: 22
            height: 22
            radius: 11
            color: Theme.text
        }
    }
}
