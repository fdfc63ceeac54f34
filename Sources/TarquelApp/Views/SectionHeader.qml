import QtQuick
import QtQuick.Controls

// The title of a group of rows.
Item {
    id: header

    required property string section

    implicitHeight: 32

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
        Accessible.role: Accessible.Heading
    }
}
