import QtQuick
import QtQuick.Controls

// A line between commands of one menu.
MenuSeparator {
    topPadding: 4
    bottomPadding: 4
    contentItem: Rectangle {
        implicitHeight: 1
        color: Theme.separator
    }
}
