import QtQuick
import QtQuick.Controls
import Tarquel

// The queue in its sections.
FocusScope {
    id: sidebar

    required property AppState app
    required property DesktopActions desktop
    property url quickLookURL
    property string quickLookName
    readonly property alias current: currentJob

    // What can be done with the selected job.
    SelectedJob {
        id: currentJob
        app: sidebar.app
        desktop: sidebar.desktop
        onQuickLookRequested: (file, fileName) => {
            sidebar.quickLookName = fileName
            sidebar.quickLookURL = file
        }
    }

    function quickLookSelectedJob() {
        if (String(quickLookURL) !== "")
            quickLookURL = ""
        else
            currentJob.quickLook()
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.sidebar
    }

    ListView {
        id: list
        objectName: "queueList"
        anchors.fill: parent
        focus: true
        activeFocusOnTab: !rowWithFocus || Window.activeFocusItem === list
        clip: true
        model: sidebar.app.jobs
        boundsBehavior: Flickable.StopAtBounds
        currentIndex: -1
        keyNavigationEnabled: false
        reuseItems: true
        cacheBuffer: 0  // what is not seen yet costs this picture more than it spares the next one
        topMargin: 4
        bottomMargin: 8
        // A row that glides in from below stands there already.
        displayMarginBeginning: Theme.rowHeight + Theme.titleHeight
        displayMarginEnd: Theme.rowHeight + Theme.titleHeight
        ScrollBar.vertical: ScrollBar {}

        Accessible.role: Accessible.List
        Accessible.name: "Queue"
        ReadingOrder {
            of: list.contentItem
        }

        section.property: "section"
        // qmllint disable unqualified
        section.delegate: SectionHeader {
            id: title
            width: ListView.view.width
            opacity: arrives ? Math.max(0, 1 - 2 * glide.ahead) : 1
            transform: Translate { y: title.offset * glide.ahead }
        }

        // The selected row has the keyboard, so that it is read out; the list itself while no such row is there.
        property Item rowWithFocus: null

        delegate: QueueRow {
            id: row
            required property int index
            width: ListView.view.width
            Accessible.description: `${index + 1} of ${list.count}`
            highlighted: jobID === sidebar.app.selectedJobID
            listHasFocus: list.activeFocus
            onClicked: {
                list.forceActiveFocus(Qt.MouseFocusReason)
                sidebar.app.selectedJobID = jobID
            }
            onMenuRequested: contextMenu.popup()
            Keys.forwardTo: [list]
            readonly property bool canHaveFocus: highlighted && !pooled
            property bool pooled: false
            ListView.onPooled: {
                pooled = true
                offset = 0
                arrives = travels = false
            }
            ListView.onReused: pooled = false
            onCanHaveFocusChanged: {
                if (canHaveFocus)
                    list.rowWithFocus = row
                else if (list.rowWithFocus === row)
                    list.rowWithFocus = null
            }
            Component.onDestruction: if (list.rowWithFocus === row) list.rowWithFocus = null
            visible: !pooled  // a row that waits to be used again is nobody's row
            opacity: arrives ? Math.max(0, 1 - 2 * glide.ahead) : 1
            z: travels && glide.ahead > 0 ? 1 : 0
            transform: Translate { y: row.offset * glide.ahead }
        }
        // qmllint enable unqualified

        // The list has no current row of its own: what is selected is a job, wherever its row goes.
        function select(row: int) {
            if (count === 0)
                return
            const there = Math.max(0, Math.min(count - 1, row))
            sidebar.app.selectedJobID = sidebar.app.jobs.value(there, "jobID")
            positionViewAtIndex(there, ListView.Contain)
        }
        function openMenu() {
            forceLayout()
            positionViewAtIndex(currentJob.row(), ListView.Contain)
            const row = itemAtIndex(currentJob.row())
            if (row)
                contextMenu.popup(row, 40, 40)
        }
        Keys.onPressed: event => {
            const row = currentJob.row()
            const page = Math.max(1, Math.floor(height / Theme.rowHeight) - 1)
            switch (event.key) {
            case Qt.Key_Up: select(row - 1); break
            case Qt.Key_Down: select(row + 1); break
            case Qt.Key_Home: select(0); break
            case Qt.Key_End: select(count - 1); break
            case Qt.Key_PageUp: select(row - page); break
            case Qt.Key_PageDown: select(row + page); break
            case Qt.Key_Space: if (!event.isAutoRepeat) sidebar.quickLookSelectedJob(); break
            case Qt.Key_Menu: openMenu(); break
            case Qt.Key_F10:
                if (!(event.modifiers & Qt.ShiftModifier)) return
                openMenu()
                break
            default: return
            }
            event.accepted = true
        }
    }

    // Rows that come are made at once, so that whoever brings them sees what that costs and lets the window draw.
    Connections {
        target: sidebar.app.jobs
        function onCountChanged() { list.forceLayout() }
    }

    QueueGlide {
        id: glide
        objectName: "queueGlide"
        anchors.fill: list
        clip: true
        list: list
        jobs: sidebar.app.jobs
        selectedJobID: sidebar.app.selectedJobID
    }

    FocusRing {
        anchors.fill: list
        anchors.margins: 2
        shown: list.activeFocus && !list.rowWithFocus
    }

    Label {
        objectName: "emptyQueue"
        anchors.centerIn: parent
        visible: list.count === 0
        text: "No clips yet"
        color: Theme.secondaryText
    }

    JobMenu {
        id: contextMenu
        job: currentJob
    }

    Loader {
        active: String(sidebar.quickLookURL) !== ""
        // qmllint disable unqualified
        sourceComponent: QuickLookWindow {
            file: sidebar.quickLookURL
            fileName: sidebar.quickLookName
            transientParent: sidebar.Window.window
            onDismissed: sidebar.quickLookURL = ""
        }
        // qmllint enable unqualified
    }
}
