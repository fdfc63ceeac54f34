import QtQuick
import QtQuick.Window

// One of the window's own drawings. Decoration, unless it is given a name to be read out.
Image {
    id: icon

    property string name
    property color color: Theme.text
    property real size: Theme.iconSize
    property string label

    source: name ? `image://icons/${name}/${String(color).slice(-6)}` : ""
    sourceSize: Qt.size(Math.round(size * Screen.devicePixelRatio), Math.round(size * Screen.devicePixelRatio))
    width: size
    height: size
    fillMode: Image.PreserveAspectFit

    Accessible.role: Accessible.Graphic
    Accessible.name: label
    Accessible.ignored: label === ""
}
