import QtQuick

// The line between two parts of the window, which the mouse and the arrow keys move. Gives the width that the left part
// shall have; a double click gives it the one that it had at first.
Item {
    id: handle

    required property string label
    property real value
    property real minimumValue
    property real maximumValue
    property real usual
    readonly property real stepSize: 16
    signal moved(real width)  // while it is being moved
    signal settled            // it stays there now

    function moveTo(width: real) {
        moved(Math.round(Math.max(minimumValue, Math.min(maximumValue, width))))
    }
    function moveToStay(width: real) {
        moveTo(width)
        settled()
    }

    implicitWidth: 5
    activeFocusOnTab: true

    Accessible.role: Accessible.Slider
    Accessible.name: label
    Accessible.onIncreaseAction: moveToStay(value + stepSize)
    Accessible.onDecreaseAction: moveToStay(value - stepSize)

    Keys.onPressed: event => {
        switch (event.key) {
        case Qt.Key_Left: moveTo(value - stepSize); break
        case Qt.Key_Right: moveTo(value + stepSize); break
        case Qt.Key_Home: moveTo(minimumValue); break
        case Qt.Key_End: moveTo(maximumValue); break
        default: return
        }
        event.accepted = true
    }
    Keys.onReleased: event => {
        if (!event.isAutoRepeat && [Qt.Key_Left, Qt.Key_Right, Qt.Key_Home, Qt.Key_End].includes(event.key))
            settled()
    }

    Rectangle {
        width: handle.activeFocus ? 3 : 1
        height: parent.height
        color: handle.activeFocus || mouse.containsMouse || mouse.pressed ? Theme.accent : Theme.separator
    }
    MouseArea {
        id: mouse
        property real grip: 0
        anchors.fill: parent
        anchors.leftMargin: -2
        anchors.rightMargin: -2
        hoverEnabled: true
        preventStealing: true
        cursorShape: Qt.SplitHCursor
        Accessible.ignored: true
        onPressed: event => grip = mapToItem(handle.parent, event.x, 0).x - handle.value
        onPositionChanged: event => {
            if (pressed)
                handle.moveTo(mapToItem(handle.parent, event.x, 0).x - grip)
        }
        onReleased: handle.settled()
        onDoubleClicked: handle.moveToStay(handle.usual)
    }
}
