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
    Label {
        Layout.alignment: Qt.AlignHCenter
        text: place.title
        font.pixelSize: Theme.titleSize
        color: Theme.text
        Accessible.role: Accessible.Heading
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
