import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// What went wrong, and what the model had said.
ColumnLayout {
    id: panel

    property string message
    property bool hasRawResponse: false
    property string rawResponse

    spacing: Theme.gap

    RowLayout {
        Layout.fillWidth: true
        spacing: 12

        Icon {
            objectName: "failureIcon"
            Layout.alignment: Qt.AlignTop
            name: "warning"
            color: Theme.orange
            size: 28
        }
        ReadableText {
            Layout.fillWidth: true
            Layout.alignment: Qt.AlignVCenter
            objectName: "failureText"
            text: panel.message
            label: "Error"
        }
    }
    Label {
        objectName: "rawResponseTitle"
        color: Theme.text
        Layout.topMargin: Theme.gap
        visible: panel.hasRawResponse
        text: "Raw model response"
        font.bold: true
    }
    Label {
        objectName: "rawResponseNote"
        Layout.fillWidth: true
        visible: panel.hasRawResponse
        text: "This is what the model actually returned. If it looks truncated, increase max_tokens. If it looks like a refusal, the model declined to describe this content."
        wrapMode: Text.Wrap
        color: Theme.secondaryText
        font.pixelSize: Theme.captionSize
    }
    SelectableText {
        Layout.fillWidth: true
        Layout.fillHeight: true
        objectName: "rawResponseText"
        visible: panel.hasRawResponse
        label: "Raw model response"
        font.family: Theme.monospace
        text: panel.rawResponse
    }
    Item {
        Layout.fillHeight: true
        visible: !panel.hasRawResponse
    }
}
