import QtQuick
import Panel

// A ring around its parent that shows the keyboard focus.
Rectangle {
    anchors.fill: parent
    anchors.margins: -2
    radius: Theme.radius + 2
    color: "transparent"
    border { width: 2; color: Theme.accent }
}
