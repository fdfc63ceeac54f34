import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A question or a message that waits for its answer. Escape, and whatever else closes it, says no.
Dialog {
    id: alert

    property string message
    property string informativeText
    property string acceptText
    property string rejectText

    function ask(text: string, information: string) {
        message = text || "Something went wrong"
        informativeText = information
        open()
    }

    parent: Overlay.overlay
    anchors.centerIn: parent
    width: Math.min(440, parent ? parent.width - 80 : 440)
    modal: true
    focus: true
    padding: Theme.margin
    closePolicy: Popup.CloseOnEscape
    onOpened: rejectButton.forceActiveFocus(Qt.TabFocusReason)

    background: Rectangle {
        color: Theme.window
        radius: Theme.radius + 2
        border.color: Theme.separator
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: Theme.gap

        Accessible.role: Accessible.AlertMessage
        Accessible.name: alert.message

        Label {
            objectName: "alertMessage"
            color: Theme.text
            Accessible.ignored: true
            Layout.fillWidth: true
            text: alert.message
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            font.bold: true
        }
        Label {
            objectName: "alertInformation"
            color: Theme.text
            Layout.fillWidth: true
            visible: text !== ""
            text: alert.informativeText
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
        }
        RowLayout {
            Layout.topMargin: Theme.gap
            Layout.alignment: Qt.AlignRight
            spacing: Theme.gap

            PushButton {
                id: rejectButton
                objectName: "rejectButton"
                text: alert.rejectText
                onClicked: alert.reject()
                Keys.onReturnPressed: clicked()
                Keys.onEnterPressed: clicked()
            }
            PushButton {
                objectName: "acceptButton"
                visible: text !== ""
                text: alert.acceptText
                prominent: true
                onClicked: alert.accept()
                Keys.onReturnPressed: clicked()
                Keys.onEnterPressed: clicked()
            }
        }
    }
}
