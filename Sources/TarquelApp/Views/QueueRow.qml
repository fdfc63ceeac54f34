import QtQuick
import QtQuick.Controls

// One job of the queue: what it is doing, its clip, and how far it is or how it ended. Always of one height, so that
// nothing moves when a line of it comes or goes. Many rows are made for one picture, so each has few parts: none that
// lays out others, one mouse area, and what few rows have only where they have it.
Item {
    id: row

    required property string jobID
    required property string uriList
    required property string fileName
    required property string status
    required property string statusLabel
    required property double progress
    required property bool isWorking
    required property string error
    required property string badge
    required property string badgeHelp
    required property string modelId
    required property string oneLine
    property bool highlighted: false
    property bool listHasFocus: false

    // Where it is seen after a change, beside where it stands; that it is new there; that it goes over others.
    property real offset: 0
    property bool arrives: false
    property bool travels: false

    signal clicked
    signal menuRequested

    readonly property alias hovered: mouse.containsMouse
    readonly property string secondLine: isWorking ? "" : error || oneLine

    // The part under the pointer, and what it says of itself.
    readonly property Item pointed: hovered ? parts.childAt(mouse.mouseX, mouse.mouseY) : null
    readonly property string help: pointed?.help ?? ""  // qmllint disable property

    objectName: "queueRow"
    implicitHeight: Theme.rowHeight
    activeFocusOnTab: highlighted || activeFocus
    focus: highlighted

    Accessible.role: Accessible.ListItem
    Accessible.name: fileName + also(statusLabel) + also(badgeHelp) + also(secondLine)
    function also(text: string): string { return text === "" ? "" : ", " + text }

    Accessible.selected: highlighted
    Accessible.onPressAction: row.clicked()

    Rectangle {
        anchors.fill: parent
        visible: row.travels && row.z > 0
        color: Theme.sidebar
    }
    Rectangle {
        x: 6
        y: 1
        width: row.width - 12
        height: row.height - 2
        radius: Theme.radius
        color: row.highlighted ? (row.listHasFocus ? Theme.selection : Theme.quietSelection)
                               : row.hovered ? Theme.hover : "transparent"
        border.width: row.highlighted && row.listHasFocus ? 1 : 0
        border.color: Theme.accent
    }

    Item {
        id: parts

        readonly property real end: width - 12
        readonly property real nameEnd: end - (model.visible ? model.width + 6 : 0)
        readonly property real lineHeight: Math.max(name.height, model.visible ? model.height : 0)
        readonly property real below: row.isWorking ? 8 : second.visible ? 4 + second.height : 0
        readonly property real line: Math.round((height - lineHeight - below) / 2)
        readonly property real nextLine: line + lineHeight + 4

        anchors.fill: parent

        Icon {
            readonly property string help: label
            objectName: "rowStatus"
            x: 12
            y: (parent.height - height) / 2
            width: size
            height: size
            name: Theme.statusIcons[row.status] ?? ""
            color: Theme.statusColors[row.status] ?? Theme.text
            label: row.statusLabel
        }
        Text {
            id: name
            readonly property string help: truncated ? text : ""
            objectName: "rowName"
            x: 42
            y: parts.line + Math.round((parts.lineHeight - height) / 2)
            width: parts.nameEnd - x - (badge.active ? badge.width + 6 : 0)
            Accessible.ignored: true
            text: row.fileName
            textFormat: Text.PlainText
            elide: Text.ElideMiddle
            maximumLineCount: 1
            horizontalAlignment: Text.AlignLeft  // beside its neighbours, also when it is written from right to left
            font: Theme.bodyFont
            color: Theme.text
        }
        Loader {
            id: badge
            readonly property string help: row.badgeHelp
            x: parts.nameEnd - width
            y: parts.line + (parts.lineHeight - height) / 2
            active: row.badge !== "none" && row.badge !== ""
            // qmllint disable unqualified
            sourceComponent: BadgeView {
                badge: row.badge
                label: row.badgeHelp
            }
            // qmllint enable unqualified
        }
        ModelPill {
            id: model
            readonly property string help: text
            objectName: "rowModel"
            x: parts.end - width
            y: parts.line + Math.round((parts.lineHeight - height) / 2)
            text: row.modelId
        }
        Loader {
            x: name.x
            y: parts.nextLine
            width: parts.end - x
            active: row.isWorking
            // qmllint disable unqualified
            sourceComponent: ThinProgressBar {
                objectName: "rowProgress"
                value: row.progress
                label: "Progress of " + row.fileName
            }
            // qmllint enable unqualified
        }
        Text {
            id: second
            readonly property string help: truncated ? text : ""
            objectName: "rowSecondLine"
            x: name.x
            y: parts.nextLine
            width: parts.end - x
            visible: text !== ""
            Accessible.ignored: true
            text: row.secondLine
            textFormat: Text.PlainText
            elide: Text.ElideRight
            maximumLineCount: 1
            horizontalAlignment: Text.AlignLeft
            font: Theme.captionFont
            color: row.error ? Theme.red : Theme.secondaryText
        }
    }

    // Dragged with the mouse, a row is its file.
    MouseArea {
        id: mouse
        anchors.fill: parent
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        hoverEnabled: true
        preventStealing: true
        drag.target: carried
        drag.threshold: 8
        // No binding: a drag is over before this ends, and would change what the binding depends on.
        drag.onActiveChanged: carried.Drag.active = drag.active
        onPressed: row.clicked()
        onClicked: event => {
            if (event.button === Qt.RightButton)
                row.menuRequested()
        }
        onReleased: carried.x = carried.y = 0
    }
    Item {
        id: carried
        objectName: "rowFile"
        Drag.dragType: Drag.Automatic
        Drag.supportedActions: Qt.CopyAction
        Drag.mimeData: ({ "text/uri-list": row.uriList, "application/x-tarquel-job": row.jobID })
        Drag.imageSource: "image://icons/film/" + String(Theme.accent).slice(-6)
    }
    Loader {
        active: row.help !== ""
        // qmllint disable unqualified
        sourceComponent: ToolTip {
            objectName: "rowHelp"
            parent: row.pointed
            visible: text !== ""
            delay: 500
            text: row.help
        }
        // qmllint enable unqualified
    }
}
