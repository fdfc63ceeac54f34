import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tarquel

// What the window shows, and the commands for the whole queue.
ToolBar {
    id: toolbar

    required property AppState app

    implicitHeight: Math.max(48, tools.implicitHeight + 16)
    Accessible.role: Accessible.ToolBar
    Accessible.name: "Tools"
    leftPadding: Theme.gap + 4
    rightPadding: Theme.gap + 4
    background: Rectangle {
        color: Theme.window
        Rectangle {
            anchors.bottom: parent.bottom
            width: parent.width
            height: 1
            color: Theme.separator
        }
    }

    RowLayout {
        id: tools
        anchors.fill: parent
        spacing: Theme.gap

        SegmentedControl {
            objectName: "modePicker"
            label: "Mode"
            choices: ["Queue", "Library"]
            current: toolbar.app.mode
            onChosen: choice => toolbar.app.mode = choice
        }
        Item {
            Layout.fillWidth: true
        }
        PushButton {
            objectName: "openButton"
            text: "Open Video…"
            drawing: "plus"
            onClicked: toolbar.app.presentOpenPanel()
        }
        PushButton {
            objectName: "clearButton"
            text: "Clear Completed"
            drawing: "check"
            enabled: toolbar.app.jobs.hasDone
            onClicked: toolbar.app.removeCompleted()
        }
    }
}
