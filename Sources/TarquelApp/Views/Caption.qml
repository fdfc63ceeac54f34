import QtQuick
import QtQuick.Controls

// One line of text that says the whole of itself under the pointer when it is too long for its place.
Label {
    id: caption

    elide: Text.ElideRight
    maximumLineCount: 1
    wrapMode: Text.NoWrap
    textFormat: Text.PlainText
    horizontalAlignment: Text.AlignLeft  // beside its neighbours, also when it is written from right to left

    HoverHandler {
        id: hover
        enabled: caption.truncated
    }
    ToolTip.visible: hover.hovered && caption.truncated
    ToolTip.delay: 500
    ToolTip.text: caption.text
}
