import QtQuick
import QtQuick.Controls

// How far something is, from 0 to 1, without jumps.
ProgressBar {
    id: bar

    property string label: "Progress"

    Accessible.name: label
    // Qt 6.4 tells assistive technology no value of a bar.
    Accessible.description: indeterminate ? "" : Math.round(value * 20) * 5 + " percent"
    Behavior on value {
        enabled: bar.visible && bar.value > 0
        NumberAnimation { duration: Theme.calm }
    }

    background: Rectangle {
        implicitHeight: 4
        radius: 2
        color: Theme.dark ? "#3a3d44" : "#d9d6cf"
    }
    contentItem: Item {
        implicitHeight: 4
        clip: bar.indeterminate

        Rectangle {
            visible: !bar.indeterminate
            width: bar.visualPosition * parent.width
            height: parent.height
            radius: 2
            color: Theme.accent
        }
        WanderingPiece {
            visible: bar.indeterminate && bar.visible
        }
    }
}
