import QtQuick
import Panel

// The stage of joining: link, address, done. The current part pulsates.
Row {
    id: bar

    property int stage

    spacing: 4
    height: 4

    Repeater {
        model: 3

        Rectangle {
            id: part
            required property int index
            readonly property bool current: index === bar.stage - 1
            width: (bar.width - 2 * bar.spacing) / 3
            height: 4
            radius: 2
            color: index < bar.stage ? Theme.accent : Theme.line

            SequentialAnimation on opacity {
                running: part.current && bar.visible
                alwaysRunToEnd: true
                loops: Animation.Infinite
                NumberAnimation { to: 0.4; duration: 500 }
                NumberAnimation { to: 1; duration: 500 }
            }
        }
    }
}
