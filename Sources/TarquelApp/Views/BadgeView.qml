import QtQuick
import QtQuick.Controls

// That a model refused a clip, or wants somebody to look at it.
Icon {
    required property string badge
    property string help

    visible: badge !== "none" && badge !== ""
    name: badge === "refused" ? "failed" : badge === "needsReview" ? "review" : ""
    color: badge === "refused" ? Theme.redFill : Theme.orange
    size: 15
    label: help

    HoverHandler {
        id: hover
    }
    ToolTip.visible: hover.hovered && visible
    ToolTip.delay: 500
    ToolTip.text: help
}
