import QtQuick
import Panel

// Four bars; `bars` of them are filled.
Row {
    id: signal

    property int bars

    spacing: 3
    height: 22

    Repeater {
        model: 4

        Rectangle {
            required property int index
            anchors.bottom: parent.bottom
            width: 5
            height: 7 + 5 * index
            radius: 1.5
            color: index < signal.bars ? Theme.text : Theme.line
        }
    }
}
