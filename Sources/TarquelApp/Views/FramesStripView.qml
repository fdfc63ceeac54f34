import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The frames that the model was shown, in a strip that can be folded away.
ColumnLayout {
    id: strip

    property var timecodes: []
    property string source
    property bool expanded: true

    spacing: Theme.gap

    AbstractButton {
        id: title
        objectName: "framesTitle"
        Layout.fillWidth: true
        text: `Frames sent to model (${strip.timecodes.length})`
        focusPolicy: Qt.StrongFocus
        onClicked: strip.expanded = !strip.expanded

        Accessible.role: Accessible.Button
        Accessible.name: text
        Accessible.checkable: true
        Accessible.checked: strip.expanded
        Accessible.onPressAction: clicked()

        contentItem: RowLayout {
            spacing: 6
            Icon {
                name: "chevron"
                size: 14
                color: Theme.secondaryText
                rotation: strip.expanded ? 90 : 0
                Behavior on rotation {
                    NumberAnimation { duration: Theme.quick }
                }
            }
            Icon {
                objectName: "framesIcon"
                name: "stack"
                size: 16
                color: Theme.secondaryText
            }
            Label {
                Layout.fillWidth: true
                text: title.text
                color: Theme.text
                Accessible.ignored: true
            }
        }
        background: FocusRing {
            shown: title.visualFocus
        }
    }

    ListView {
        id: list
        objectName: "framesList"
        Layout.fillWidth: true
        implicitHeight: 80 + 6 + Math.max(18, Math.ceil(Theme.captionSize * 1.4)) + 12
        visible: strip.expanded
        orientation: ListView.Horizontal
        model: strip.timecodes
        spacing: 10
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        ScrollBar.horizontal: ScrollBar {}
        // Tab stops at one frame, the arrow keys go from frame to frame.
        Keys.onPressed: event => {
            if (event.key === Qt.Key_Home) currentIndex = 0
            else if (event.key === Qt.Key_End) currentIndex = count - 1
            else return
            event.accepted = true
        }
        Accessible.role: Accessible.List
        Accessible.name: title.text

        // qmllint disable unqualified
        delegate: FrameThumbnail {
            source: strip.source + index
            onClicked: {
                list.currentIndex = index
                sheet.show(index)
            }
        }
        // qmllint enable unqualified
    }

    FramePreviewSheet {
        id: sheet
        source: strip.source
        timecodes: strip.timecodes
    }
}
