import QtQuick

// Says where the keyboard is.
Rectangle {
    property bool shown: false

    color: "transparent"
    radius: Theme.radius
    border.width: shown ? 2 : 0
    border.color: Theme.accent
}
