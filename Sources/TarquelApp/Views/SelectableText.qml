import QtQuick
import QtQuick.Controls
import Tarquel

// A text of any length, to be read and copied. Laying out a long text takes seconds, so the view holds its beginning,
// and takes in more when somebody comes to the end of that. Who selects all and copies gets the whole text.
ScrollView {
    id: view

    property alias text: source.text
    property string label
    readonly property Flickable flickable: contentItem as Flickable

    LongText {
        id: source
        onTextChanged: view.begin()
    }

    function begin() {
        area.text = source.takePiece(0)
        flickable.contentY = 0
    }
    function goOn() {
        if (!source.isTakenIn && flickable.contentY + 2 * height >= flickable.contentHeight)
            area.insert(area.length, source.takePiece(area.length))
    }

    clip: true
    implicitWidth: 200
    implicitHeight: 100
    contentWidth: availableWidth
    onHeightChanged: Qt.callLater(goOn)  // qmllint disable

    Connections {
        target: view.contentItem
        function onContentYChanged() { Qt.callLater(view.goOn) }  // qmllint disable
    }

    TextArea {
        id: area

        implicitWidth: 0  // a wrapped text has no width of its own; asked for one, it would go round in circles
        readOnly: true
        selectByMouse: true
        textFormat: TextEdit.PlainText
        wrapMode: TextEdit.Wrap
        color: Theme.text
        padding: 0
        textMargin: 12  // scrolls with the text, which a padding would cut off before the edge
        background: null
        Accessible.name: view.label

        Keys.onPressed: event => {
            if (selectionStart === selectionEnd || !event.matches(StandardKey.Copy))
                return
            if (selectionStart === 0 && selectionEnd === length)
                source.copyAll()
            else
                source.copyPart(getText(selectionStart, selectionEnd), selectionStart)
            event.accepted = true
        }
    }

    background: Rectangle {
        color: Theme.base
        radius: Theme.radius
        border.width: area.activeFocus ? 2 : 1
        border.color: area.activeFocus ? Theme.accent : Theme.separator
    }
}
