import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// Labels and values, to be read and copied.
ScrollView {
    id: table

    property var rows: []

    clip: true
    contentWidth: availableWidth
    padding: 12
    background: Rectangle {
        color: Theme.base
        radius: Theme.radius
        border.width: 1
        border.color: Theme.separator
    }

    GridLayout {
        width: table.availableWidth
        columns: 2
        columnSpacing: Theme.margin
        rowSpacing: Theme.gap
        flow: GridLayout.TopToBottom
        rows: Math.max(1, table.rows.length)

        Repeater {
            model: table.rows
            Label {
                objectName: "sourceLabel"
                required property var modelData
                Layout.alignment: Qt.AlignTop
                text: modelData.label
                color: Theme.secondaryText
            }
        }
        Repeater {
            model: table.rows
            ReadableText {
                objectName: "sourceValue"
                required property var modelData
                Layout.fillWidth: true
                text: modelData.value
                label: modelData.label
            }
        }
    }
}
