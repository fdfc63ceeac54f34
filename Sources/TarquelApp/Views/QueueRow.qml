import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// One job of the queue: what it is doing, its clip, and how far it is or how it ended. Always of one height, so that
// nothing moves when a line of it comes or goes.
ItemDelegate {
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
    property bool listHasFocus: false

    // Where it is seen after a change, beside where it stands; that it is new there; that it goes over others.
    property real offset: 0
    property bool arrives: false
    property bool travels: false

    signal menuRequested

    readonly property string secondLine: isWorking ? "" : error || oneLine

    objectName: "queueRow"
    hoverEnabled: true
    implicitHeight: Theme.rowHeight
    leftPadding: 12
    rightPadding: 12
    topPadding: 0
    bottomPadding: 0
    focusPolicy: highlighted || activeFocus ? Qt.TabFocus : Qt.NoFocus
    focus: highlighted

    Accessible.role: Accessible.ListItem
    Accessible.name: fileName + also(statusLabel) + also(badgeHelp) + also(secondLine)
    function also(text: string): string { return text === "" ? "" : ", " + text }

    Accessible.selected: highlighted
    Accessible.onPressAction: row.clicked()

    Rectangle {
        anchors.fill: parent
        z: -2
        visible: row.travels && row.z > 0
        color: Theme.sidebar
    }
    background: Rectangle {
        anchors.fill: parent
        anchors.leftMargin: 6
        anchors.rightMargin: 6
        anchors.topMargin: 1
        anchors.bottomMargin: 1
        radius: Theme.radius
        color: row.highlighted ? (row.listHasFocus ? Theme.selection : Theme.quietSelection)
                               : row.hovered ? Theme.hover : "transparent"
        border.width: row.highlighted && row.listHasFocus ? 1 : 0
        border.color: Theme.accent
    }

    contentItem: RowLayout {
        spacing: 10

        StatusIcon {
            objectName: "rowStatus"
            status: row.status
            label: row.statusLabel
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 4

            RowLayout {
                Layout.fillWidth: true
                spacing: 6

                Caption {
                    objectName: "rowName"
                    Layout.fillWidth: true
                    Accessible.ignored: true
                    text: row.fileName
                    elide: Text.ElideMiddle
                    color: Theme.text
                }
                BadgeView {
                    objectName: "rowBadge"
                    badge: row.badge
                    help: row.badgeHelp
                }
                ModelPill {
                    objectName: "rowModel"
                    text: row.modelId
                }
            }
            ThinProgressBar {
                objectName: "rowProgress"
                Layout.fillWidth: true
                visible: row.isWorking
                value: row.progress
                label: "Progress of " + row.fileName
            }
            Caption {
                objectName: "rowSecondLine"
                Layout.fillWidth: true
                visible: text !== ""
                Accessible.ignored: true
                text: row.secondLine
                font.pixelSize: Theme.captionSize
                color: row.error ? Theme.red : Theme.secondaryText
            }
        }
    }

    // Dragged with the mouse, a row is its file.
    MouseArea {
        id: mouse
        anchors.fill: parent
        acceptedButtons: Qt.LeftButton | Qt.RightButton
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
}
