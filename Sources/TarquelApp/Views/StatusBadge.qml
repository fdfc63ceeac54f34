import QtQuick

// The status of a job as a coloured label.
Rectangle {
    id: badge

    required property string status
    property string label
    readonly property color tint: Theme.statusColors[status] ?? Theme.text

    implicitWidth: content.implicitWidth + 18
    implicitHeight: content.implicitHeight + 8
    radius: height / 2
    color: Qt.alpha(tint, Theme.dark ? 0.22 : 0.12)

    Accessible.role: Accessible.StaticText
    Accessible.name: label

    Row {
        id: content
        anchors.centerIn: parent
        spacing: 6

        Icon {
            objectName: "detailStatusIcon"
            anchors.verticalCenter: parent.verticalCenter
            name: Theme.statusIcons[badge.status] ?? ""
            color: badge.tint
            size: 16
        }
        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: badge.label
            font.pixelSize: Theme.captionSize
            color: Theme.statusTextColors[badge.status] ?? Theme.text
            Accessible.ignored: true
        }
    }
}
