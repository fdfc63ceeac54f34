import QtQuick

// The model that a job is described with.
Text {
    id: pill

    visible: text !== ""
    width: Math.min(Math.ceil(implicitWidth), 130)
    leftPadding: 6
    rightPadding: 6
    topPadding: 2
    bottomPadding: 1
    textFormat: Text.PlainText
    font.pointSize: 10 * 72 / 96
    elide: Text.ElideRight
    color: Theme.text

    Rectangle {
        anchors.fill: parent
        z: -1
        radius: height / 2
        color: Theme.pill
    }
}
