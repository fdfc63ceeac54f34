import QtQuick
import Tarquel

// Keeps the queue's list calm when jobs come, go and change section. The list lays out its rows and titles at once; what
// is seen of them starts where it stood and glides to its place. What is new fades in, a title that is gone fades out.
// Where too much changes for an eye to follow, nothing glides. A row under the pointer stays there while the list has
// room for that, and whoever works in the list by keyboard keeps the selected row in view.
Item {
    id: glide

    required property ListView list
    required property JobListModel jobs
    required property string selectedJobID

    // From 1, right after a change, to 0: everything is seen where it stands.
    property real ahead: 0
    readonly property int few: 12

    // While a change has not been drawn: what was seen before, by row and title, and the jobs that change section.
    property var places: null
    property var travellers: null
    property string pointedJobID
    property bool keepsSelection: false
    property int changes: 0
    property var leaving: []

    function titleKey(section: string): string { return "title " + section }

    // The list's titles and rows, those in use.
    function parts(): var {
        const all = []
        const children = list.contentItem.children
        for (let index = 0; index < children.length; ++index) {
            const child = children[index]
            if (child.visible && (child as QueueRow || child as SectionHeader))
                all.push(child)
        }
        return all
    }
    function keyOf(part: Item): string {
        const row = part as QueueRow
        return row ? row.jobID : titleKey((part as SectionHeader).section)
    }
    function placeOf(part: Item): real { return part.y - list.contentY }

    function remember(count: int) {
        changes += count
        if (places)
            return
        places = {}
        travellers = {}
        pointedJobID = ""
        keepsSelection = false
        for (const part of parts()) {
            places[keyOf(part)] = placeOf(part) + part.offset * ahead
            const row = part as QueueRow
            if (row && row.hovered)
                pointedJobID = row.jobID
            if (row && row.jobID === selectedJobID)
                keepsSelection = list.activeFocus && placeOf(part) >= 0 && placeOf(part) + part.height <= list.height
        }
    }

    function rowOf(jobID: string): QueueRow {
        return list.itemAtIndex(jobs.rowOf(jobID)) as QueueRow
    }
    function scrollBy(distance: real) {
        const begin = list.originY - list.topMargin
        const end = Math.max(begin, list.originY + list.contentHeight + list.bottomMargin - list.height)
        list.contentY = Math.max(begin, Math.min(end, list.contentY + distance))
        list.forceLayout()
    }
    function keepInPlace() {
        if (list.moving)
            return
        const pointed = pointedJobID && !(pointedJobID in travellers) ? rowOf(pointedJobID) : null
        if (pointed) {
            scrollBy(placeOf(pointed) - places[pointedJobID])
        } else if (keepsSelection && jobs.rowOf(selectedJobID) >= 0) {
            list.positionViewAtIndex(jobs.rowOf(selectedJobID), ListView.Contain)
            list.forceLayout()
            const row = rowOf(selectedJobID)
            const place = row ? placeOf(row) : 0  // laid out, it may stand elsewhere than was estimated
            if (row)
                scrollBy(Math.min(0, place) + Math.max(0, place + row.height - list.height))
        }
    }

    function settle() {
        list.forceLayout()
        keepInPlace()
        const glides = changes <= few && !Theme.reducedMotion
        let moves = false
        const gone = places
        places = null
        for (const part of parts()) {
            const key = keyOf(part)
            const old = gone[key]
            part.offset = glides && old !== undefined ? old - placeOf(part) : 0
            part.arrives = glides && old === undefined
            if (part as QueueRow)
                part.travels = glides && key in travellers
            moves = moves || part.offset !== 0 || part.arrives
            delete gone[key]
        }
        leaving = glides ? Object.keys(gone).filter(key => key.startsWith(titleKey(""))) : []
        leavingTitles.places = gone
        if (moves || leaving.length > 0)
            movement.restart()
        else if (!glides)
            movement.complete()
    }

    Connections {
        target: glide.jobs
        function onRowsAboutToBeInserted(parent, first, last) { glide.remember(last - first + 1) }
        function onRowsAboutToBeRemoved(parent, first, last) { glide.remember(last - first + 1) }
        function onSectionWillChange(jobID) {
            glide.remember(1)
            glide.travellers[jobID] = true
        }
    }
    // After everything has been laid out for a picture, and before it is drawn.
    Connections {
        target: glide.Window.window
        enabled: glide.places !== null
        function onAfterAnimating() { glide.settle() }
    }
    Timer {
        interval: 500
        repeat: true
        running: glide.changes > 0
        onTriggered: glide.changes = 0
    }
    NumberAnimation {
        id: movement
        target: glide
        property: "ahead"
        from: 1
        to: 0
        duration: Theme.calm
        easing.type: Easing.OutCubic
    }

    Repeater {
        id: leavingTitles
        property var places: ({})
        model: glide.leaving
        // qmllint disable unqualified
        SectionHeader {
            required property string modelData
            section: modelData.slice(glide.titleKey("").length)
            width: glide.width
            y: leavingTitles.places[modelData] ?? 0
            opacity: Math.max(0, 2 * glide.ahead - 1)
            visible: opacity > 0
            Accessible.ignored: true
        }
        // qmllint enable unqualified
    }
}
