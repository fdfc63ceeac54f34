import QtQuick

// A piece that wanders along its parent: something is under way, and nobody can say how far.
Rectangle {
    id: piece

    width: parent ? parent.width / 5 : 0
    height: parent ? parent.height : 0
    radius: 2
    color: Theme.accent

    XAnimator on x {
        running: piece.visible
        from: -piece.width
        to: piece.parent ? piece.parent.width : 0
        duration: 1600
        loops: Animation.Infinite
        easing.type: Easing.InOutSine
    }
}
