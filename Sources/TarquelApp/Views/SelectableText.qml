import QtQuick
import QtQuick.Controls
import Tarquel

// A text of any length, to be read and copied. Laying out a long text takes seconds, so the view holds its beginning,
// and takes in more when somebody comes to the end of that. Who selects all and copies gets the whole text.
ScrollView {
    id: view

    property string text
    property string label

    readonly property int piece: 12000
    property int shown: 0
    readonly property Flickable flickable: contentItem as Flickable

    function endOfPiece(start: int): int {
        if (start + piece >= text.length)
            return text.length
        const line = text.lastIndexOf("\n", start + piece)
        if (line >= start + piece / 2)
            return line + 1
        const unit = text.charCodeAt(start + piece - 1)
        return start + piece - (unit >= 0xd800 && unit < 0xdc00 ? 1 : 0)
    }
    function begin() {
        shown = endOfPiece(0)
        area.text = text.slice(0, shown)
        flickable.contentY = 0
    }
    function goOn() {
        if (shown >= text.length || flickable.contentY + 2 * height < flickable.contentHeight)
            return
        const end = endOfPiece(shown)
        area.insert(area.length, text.slice(shown, end))
        shown = end
    }

    clip: true
    implicitWidth: 200
    implicitHeight: 100
    contentWidth: availableWidth
    onTextChanged: begin()
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
        padding: 12
        background: null
        Accessible.name: view.label

        Keys.onPressed: event => {
            const all = selectionStart === 0 && selectionEnd === length && length > 0
            if (!all || view.shown === view.text.length || !event.matches(StandardKey.Copy))
                return
            Clipboard.copy(view.text)
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
