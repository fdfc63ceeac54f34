import QtQuick
import QtQuick.Controls

// A text of any length, to be read and copied.
ScrollView {
    id: view

    property alias text: area.text
    property string label

    clip: true
    contentWidth: availableWidth

    TextArea {
        id: area

        readOnly: true
        selectByMouse: true
        textFormat: TextEdit.PlainText
        wrapMode: TextEdit.Wrap
        color: Theme.text
        padding: 12
        background: null
        Accessible.name: view.label
    }

    background: Rectangle {
        color: Theme.base
        radius: Theme.radius
        border.width: area.activeFocus ? 2 : 1
        border.color: area.activeFocus ? Theme.accent : Theme.separator
    }
}
