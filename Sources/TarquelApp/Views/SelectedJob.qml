import QtQuick
import Tarquel

// The selected job of the queue and what can be done with it.
QtObject {
    id: job

    required property AppState app
    required property DesktopActions desktop
    readonly property string jobID: app.selectedJobID
    property bool exists: false
    property bool canRetry: false
    property bool canCancel: false
    signal quickLookRequested(url file, string fileName)

    function row(): int { return app.jobs.rowOf(jobID) }
    function read(role: string): var { return app.jobs.value(row(), role) }
    function refresh() {
        exists = row() >= 0
        canRetry = read("canRetry") ?? false
        canCancel = read("canCancel") ?? false
    }
    function retry() { if (canRetry) app.retry(jobID) }
    function cancel() { if (canCancel) app.cancel(jobID) }
    function quickLook() { if (exists) quickLookRequested(read("sourceURL"), read("fileName")) }
    function showInFileManager() { if (exists) desktop.showInFileManager(read("sourceURL")) }

    onJobIDChanged: refresh()
    Component.onCompleted: refresh()

    readonly property Connections changes: Connections {
        target: job.app.jobs
        function onRowsInserted() { job.refresh() }
        function onRowsRemoved() { Qt.callLater(job.refresh) }  // qmllint disable
        function onRowsMoved() { Qt.callLater(job.refresh) }  // qmllint disable
        function onDataChanged(first, last) {
            const row = job.row()
            if (first.row <= row && row <= last.row)
                job.refresh()
        }
    }
}
