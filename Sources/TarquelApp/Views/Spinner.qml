import QtQuick

// Something is under way, and nobody can say how far.
Icon {
    id: spinner

    property bool running: visible

    name: "spinner"
    color: Theme.accent
    Accessible.role: Accessible.Indicator

    RotationAnimator on rotation {
        running: spinner.running && spinner.visible
        from: 0
        to: 360
        duration: 1100
        loops: Animation.Infinite
    }
}
