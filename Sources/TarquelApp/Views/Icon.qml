import QtQuick
import QtQuick.Window

// One of the window's own drawings. Decoration, unless it is given a name to be read out.
Item {
    id: icon

    property string name
    property color color: Theme.text
    property real size: Theme.iconSize
    property string label

    // An image in a layout would take the size of its pixels, which are more on a finer screen.
    implicitWidth: size
    implicitHeight: size

    Accessible.role: Accessible.Graphic
    Accessible.name: label
    Accessible.ignored: label === ""

    Image {
        readonly property int pixels: Math.round(icon.size * Screen.devicePixelRatio)

        anchors.fill: parent
        source: icon.name ? `image://icons/${icon.name}/${String(icon.color).slice(-6)}` : ""
        sourceSize.width: pixels
        sourceSize.height: pixels
    }
}
