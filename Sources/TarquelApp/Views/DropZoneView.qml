import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tarquel

// What a window without a job asks for.
Item {
    id: zone

    required property AppState app
    property bool isTargeted: false

    Rectangle {
        objectName: "dropFrame"
        anchors.fill: parent
        anchors.margins: 28
        radius: 14
        color: zone.isTargeted ? Qt.alpha(Theme.accent, 0.1) : "transparent"
        border.width: zone.isTargeted ? 3 : 1
        border.color: zone.isTargeted ? Theme.accent : Theme.separator

        Behavior on color {
            ColorAnimation { duration: Theme.quick }
        }
    }

    ColumnLayout {
        anchors.centerIn: parent
        spacing: Theme.margin

        Icon {
            objectName: "dropIcon"
            Layout.alignment: Qt.AlignHCenter
            name: "stack"
            size: 64
            color: zone.isTargeted ? Theme.accent : Theme.secondaryText
        }
        Label {
            objectName: "dropText"
            Layout.alignment: Qt.AlignHCenter
            text: "Drop video files anywhere in this window"
            font.pixelSize: Theme.titleSize
            color: Theme.text
        }
        PushButton {
            Layout.alignment: Qt.AlignHCenter
            objectName: "chooseButton"
            text: "Choose Files…"
            prominent: true
            onClicked: zone.app.presentOpenPanel()
        }
    }
}
