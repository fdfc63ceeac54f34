import QtQuick

// What can be done with a job.
CommandMenu {
    id: menu

    objectName: "jobMenu"

    required property SelectedJob job

    CommandItem {
        text: "Retry"
        offered: menu.job.canRetry
        onTriggered: menu.job.retry()
    }
    CommandItem {
        text: "Cancel"
        offered: menu.job.canCancel
        onTriggered: menu.job.cancel()
    }
    CommandItem {
        text: "Quick Look"
        onTriggered: menu.job.quickLook()
    }
    CommandItem {
        text: "Show in Finder"
        onTriggered: menu.job.showInFileManager()
    }
}
