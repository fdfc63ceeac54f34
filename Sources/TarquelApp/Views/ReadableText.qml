import QtQuick

// A text of a few lines, to be read and copied.
TextEdit {
    id: edit

    required property string label

    textFormat: TextEdit.PlainText
    readOnly: true
    selectByMouse: true
    activeFocusOnTab: true
    wrapMode: TextEdit.Wrap
    color: Theme.text
    selectionColor: Theme.accent

    Accessible.role: Accessible.EditableText
    Accessible.name: label
    Accessible.readOnly: true

    FocusRing {
        anchors.fill: parent
        anchors.margins: -3
        shown: edit.activeFocus
    }
}
