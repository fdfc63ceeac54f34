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

    DropArea {
        id: dropArea
        objectName: "dropArea"
        anchors.fill: parent
        enabled: content.app.mode === "Queue" && content.visible
        keys: ["text/uri-list"]
        onDropped: drop => {
            if (!drop.hasUrls)
                return
            content.app.enqueue(drop.urls)
            drop.accept(Qt.CopyAction)
        }
    }

    SplitView {
        id: queue
        anchors.fill: parent
        visible: content.app.mode === "Queue"

        handle: Rectangle {
            implicitWidth: 5
            color: "transparent"
            Rectangle {
                anchors.horizontalCenter: parent.horizontalCenter
                width: 1
                height: parent.height
                color: parent.SplitHandle.pressed || parent.SplitHandle.hovered ? Theme.accent : Theme.separator
            }
        }

        QueueSidebar {
            objectName: "sidebar"
            id: sidebar
            SplitView.preferredWidth: 370
            SplitView.minimumWidth: 260
            app: content.app
            desktop: content.desktop
        }
        Item {
            SplitView.fillWidth: true
            SplitView.minimumWidth: 420

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
        anchors.fill: parent
        anchors.margins: 4
        visible: content.isTargeted && content.detail.exists
        color: "transparent"
        radius: Theme.radius
        border.width: 3
        border.color: Theme.accent
    }
}
