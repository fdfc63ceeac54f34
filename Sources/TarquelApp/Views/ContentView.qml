import QtQuick
import QtQuick.Controls
import Tarquel

// The queue with the selected job beside it, or the library.
Item {
    id: content

    required property AppState app
    required property JobDetail detail
    required property DesktopActions desktop
    readonly property alias sidebar: sidebar
    readonly property bool isTargeted: dropArea.containsDrag

    // The whole window, its menu and its tool bar too.
    DropArea {
        id: dropArea
        objectName: "dropArea"
        parent: content.Window.contentItem
        anchors.fill: parent
        enabled: content.app.mode === "Queue" && content.visible
        keys: ["text/uri-list"]
        // A row that is let go over its own queue is not meant as another job.
        onEntered: drag => { if (drag.formats.includes("application/x-tarquel-job")) drag.accepted = false }
        // Files stay where they are, also where the other program would rather move them.
        onPositionChanged: drag => drag.accept(Qt.CopyAction)
        onDropped: drop => {
            if (!drop.hasUrls)
                return
            content.app.enqueue(drop.urls)
            drop.accept(Qt.CopyAction)
        }
    }

    Item {
        id: queue
        anchors.fill: parent
        visible: content.app.mode === "Queue"

        // As wide as the user made it, as far as the window has room for both parts.
        property real wishedWidth: content.app.sidebarWidth || handle.usual

        QueueSidebar {
            objectName: "sidebar"
            id: sidebar
            anchors.left: parent.left
            anchors.top: parent.top
            anchors.bottom: parent.bottom
            width: Math.max(handle.minimumValue, Math.min(handle.maximumValue, queue.wishedWidth))
            app: content.app
            desktop: content.desktop
        }
        SplitHandle {
            id: handle
            objectName: "splitHandle"
            anchors.left: sidebar.right
            anchors.top: parent.top
            anchors.bottom: parent.bottom
            label: "Width of the queue"
            usual: 370
            value: sidebar.width
            minimumValue: 260
            maximumValue: Math.max(minimumValue, Math.min(700, queue.width - width - 480))
            onMoved: width => queue.wishedWidth = width
            onSettled: content.app.sidebarWidth = queue.wishedWidth
        }
        Item {
            anchors.left: handle.right
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.bottom: parent.bottom

            JobDetailView {
                objectName: "jobDetail"
                anchors.fill: parent
                visible: content.detail.exists
                job: content.detail
                desktop: content.desktop
            }
            DropZoneView {
                objectName: "dropZone"
                anchors.fill: parent
                visible: !content.detail.exists
                isTargeted: content.isTargeted
                app: content.app
            }
        }
    }

    LibraryView {
        objectName: "library"
        anchors.fill: parent
        visible: content.app.mode === "Library"
        app: content.app
    }

    // Over a job's pane the window says as well that it takes what is held over it.
    Rectangle {
        objectName: "dropHint"
        parent: content.Window.contentItem
        z: 10  // above the window's bars
        anchors.fill: parent
        anchors.margins: 4
        visible: content.isTargeted && content.detail.exists
        color: "transparent"
        radius: Theme.radius
        border.width: 3
        border.color: Theme.accent
    }
}
