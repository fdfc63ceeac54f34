import QtQuick
import QtQuick.Controls

// The model that a job is described with.
Rectangle {
    id: pill

    property string text

    visible: text !== ""
    implicitWidth: Math.min(label.implicitWidth + 12, 130)
    implicitHeight: label.implicitHeight + 3
    radius: height / 2
    color: Qt.alpha(Theme.text, 0.07)

    Text {
        id: label
        anchors.centerIn: parent
        width: parent.width - 12
        text: pill.text
        textFormat: Text.PlainText
        font.pointSize: 10 * 72 / 96
        elide: Text.ElideRight
        color: Theme.text
    }

    HoverHandler {
        id: hover
    }
    ToolTip.visible: hover.hovered
    ToolTip.delay: 500
    ToolTip.text: text
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
