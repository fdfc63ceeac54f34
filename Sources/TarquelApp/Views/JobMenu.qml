import QtQuick
import QtQuick.Controls

// What can be done with a job.
Menu {
    id: menu

    objectName: "jobMenu"

    required property SelectedJob job

    component Command: MenuItem {
        height: visible ? implicitHeight : 0
    }

    Command {
        text: "Retry"
        visible: menu.job.canRetry
        onTriggered: menu.job.retry()
    }
    Command {
        text: "Cancel"
        visible: menu.job.canCancel
        onTriggered: menu.job.cancel()
    }
    Command {
        text: "Quick Look"
        onTriggered: menu.job.quickLook()
    }
    Command {
        text: "Show in Finder"
        onTriggered: menu.job.showInFileManager()
    }
}
