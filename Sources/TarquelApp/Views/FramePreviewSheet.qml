import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// One frame as large as the window allows. The arrow keys go to its neighbours.
Dialog {
    id: sheet

    property int index: 0
    property string source
    property var timecodes: []

    function show(frame: int) {
        index = frame
        open()
    }
    function dismiss() {
        close()
    }
    onTimecodesChanged: close()

    parent: Overlay.overlay
    anchors.centerIn: parent
    width: Math.max(640, parent ? parent.width - 120 : 640)
    height: Math.max(480, parent ? parent.height - 90 : 480)
    modal: true
    focus: true
    padding: 16
    closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutside
    onOpened: doneButton.forceActiveFocus(Qt.TabFocusReason)

    background: Rectangle {
        color: Theme.window
        radius: Theme.radius + 2
        border.color: Theme.separator
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 12

        Keys.onLeftPressed: sheet.index = Math.max(0, sheet.index - 1)
        Keys.onRightPressed: sheet.index = Math.min(sheet.timecodes.length - 1, sheet.index + 1)

        RowLayout {
            Layout.fillWidth: true

            Label {
                Layout.fillWidth: true
                objectName: "frameTitle"
                color: Theme.text
                text: `Frame ${sheet.index + 1} of ${sheet.timecodes.length} — ${sheet.timecodes[sheet.index] ?? ""}`
                font.bold: true
            }
            PushButton {
                id: doneButton
                objectName: "doneButton"
                text: "Done"
                onClicked: sheet.dismiss()
                Keys.onReturnPressed: clicked()
                Keys.onEnterPressed: clicked()
            }
        }
        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            Image {
                objectName: "previewPicture"
                id: picture
                anchors.fill: parent
                source: sheet.visible ? sheet.source + sheet.index : ""
                fillMode: Image.PreserveAspectFit
                mipmap: true
                Accessible.role: Accessible.Graphic
                Accessible.name: `Frame ${sheet.index + 1}`
            }
            Column {
                anchors.centerIn: parent
                spacing: 10
                visible: picture.status === Image.Error

                Icon {
                    objectName: "brokenPreview"
                    anchors.horizontalCenter: parent.horizontalCenter
                    name: "warning"
                    color: Theme.orange
                    size: 40
                }
                Label {
                    objectName: "brokenPreviewText"
                    color: Theme.text
                    text: "Could not decode JPEG"
                }
            }
        }
    }
}
