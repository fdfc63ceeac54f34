import QtQuick
import QtQuick.Controls

// What a job is doing, as a drawing whose shape alone tells.
Icon {
    required property string status

    name: Theme.statusIcons[status] ?? ""
    color: Theme.statusColors[status] ?? Theme.text

    HoverHandler {
        id: hover
    }
    ToolTip.visible: hover.hovered && label !== ""
    ToolTip.delay: 500
    ToolTip.text: label
}
