import QtQuick

// That a model refused a clip, or wants somebody to look at it.
Icon {
    required property string badge

    objectName: "rowBadge"
    name: badge === "refused" ? "failed" : badge === "needsReview" ? "review" : ""
    color: badge === "refused" ? Theme.redFill : Theme.orange
    size: 15
}
