import QtQuick
import QtQuick.Controls

// How far something is, from 0 to 1, without jumps.
ProgressBar {
    id: bar

    property string label: "Progress"

    Accessible.name: label
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
        // Nobody can say how far: a piece that wanders.
        Rectangle {
            id: piece
            visible: bar.indeterminate
            width: parent.width / 5
            height: parent.height
            radius: 2
            color: Theme.accent

            XAnimator on x {
                running: piece.visible && bar.visible
                from: -piece.width
                to: piece.parent ? piece.parent.width : 0
                duration: 1600
                loops: Animation.Infinite
                easing.type: Easing.InOutSine
            }
        }
    }
}
