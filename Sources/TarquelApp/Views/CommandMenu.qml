import QtQuick
import QtQuick.Controls

// A menu in the window's look.
Menu {
    id: menu

    implicitWidth: Math.max(250, Theme.bodySize * 19)
    topPadding: 5
    bottomPadding: 5
    delegate: CommandItem {}
    background: Rectangle {
        color: Theme.base
        radius: Theme.radius
        border.width: 1
        border.color: Theme.separator
    }
}
