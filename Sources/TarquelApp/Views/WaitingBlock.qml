import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// What a job without an outcome is waiting for.
ColumnLayout {
    id: block

    required property string status
    property string label
    property string elapsed
    property double progress: 0

    spacing: 12

    Spinner {
        objectName: "waitingSpinner"
        Layout.alignment: Qt.AlignHCenter
        visible: block.status === "calling"
        size: 36
        label: block.label
    }
    Icon {
        Layout.alignment: Qt.AlignHCenter
        visible: block.status !== "calling"
        name: Theme.statusIcons[block.status] ?? ""
        color: Theme.secondaryText
        size: 36
    }
    Label {
        Layout.alignment: Qt.AlignHCenter
        objectName: "waitingLabel"
        text: block.label
        font.pixelSize: Theme.titleSize
        color: Theme.text
    }
    Label {
        Layout.alignment: Qt.AlignHCenter
        visible: text !== ""
        objectName: "elapsed"
        text: block.elapsed
        color: Theme.secondaryText
    }
    ThinProgressBar {
        objectName: "waitingProgress"
        Layout.alignment: Qt.AlignHCenter
        Layout.preferredWidth: 260
        visible: block.status !== "calling"
        value: block.progress
        label: block.label
    }
}
