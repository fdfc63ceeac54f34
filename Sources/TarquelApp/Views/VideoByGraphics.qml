import QtMultimedia

// What plays, where a graphics processor draws.
VideoOutput {
    readonly property bool hasPicture: true
    readonly property var output: this
    property int clockwise

    orientation: clockwise
}
