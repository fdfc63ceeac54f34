import QtQuick
import QtQuick.Controls

// The title of a group of rows.
Item {
    id: header

    required property string section

    // Where it is seen after a change, beside where it stands, and that it is new there.
    property real offset: 0
    property bool arrives: false
    onSectionChanged: {
        offset = 0
        arrives = false
    }

    implicitHeight: Theme.titleHeight
    // A label would be told as a text and nothing more.
    Accessible.role: Accessible.Heading
    Accessible.name: section

    Label {
        objectName: "sectionTitle"
        anchors.left: parent.left
        anchors.leftMargin: 14
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 5
        text: header.section
        textFormat: Text.PlainText
        font.pixelSize: Theme.captionSize
        font.bold: true
        color: Theme.secondaryText
        Accessible.ignored: true
    }
}
