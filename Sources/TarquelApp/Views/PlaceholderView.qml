import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A place with nothing in it yet, which says what belongs there.
ColumnLayout {
    id: place

    property string drawing
    property string title
    property string explanation

    spacing: 12

    Icon {
        Layout.alignment: Qt.AlignHCenter
        name: place.drawing
        size: 56
        color: Theme.secondaryText
    }
    Item {
        Layout.alignment: Qt.AlignHCenter
        implicitWidth: heading.implicitWidth
        implicitHeight: heading.implicitHeight
        Accessible.role: Accessible.Heading
        Accessible.name: place.title

        Label {
            id: heading
            text: place.title
            font.pixelSize: Theme.titleSize
            color: Theme.text
            Accessible.ignored: true
        }
    }
    Label {
        Layout.alignment: Qt.AlignHCenter
        Layout.maximumWidth: 420
        text: place.explanation
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
        color: Theme.secondaryText
    }
}
