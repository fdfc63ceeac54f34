import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// An entry of a menu, with the keys that do the same.
MenuItem {
    id: item

    readonly property string keys: action && typeof action.shortcut === "string" ? action.shortcut : ""

    // Entries that are not offered are passed over by the arrow keys as well, which look for what may have the focus.
    property bool offered: true
    visible: offered
    height: visible ? implicitHeight : 0
    Binding on activeFocusOnTab {
        value: item.offered
        when: !item.activeFocus
        restoreMode: Binding.RestoreNone
    }
    implicitHeight: Theme.commandHeight
    leftPadding: 12
    rightPadding: 12
    topPadding: 0
    bottomPadding: 0
    Accessible.role: Accessible.MenuItem
    Accessible.name: text
    Accessible.onPressAction: {
        if (menu)
            menu.dismiss()
        if (action)
            action.trigger(item)
        else
            triggered()
    }

    background: Rectangle {
        anchors.fill: parent
        anchors.leftMargin: 4
        anchors.rightMargin: 4
        radius: 4
        color: item.highlighted && item.enabled ? Theme.accent : "transparent"
    }
    contentItem: RowLayout {
        spacing: 28
        opacity: item.enabled ? 1 : 0.45

        Text {
            Layout.fillWidth: true
            text: item.text
            font: item.font
            color: item.highlighted && item.enabled ? "#ffffff" : Theme.text
        }
        Text {
            visible: text !== ""
            text: item.keys
            font: item.font
            color: item.highlighted && item.enabled ? "#ffffff" : Theme.secondaryText
        }
    }
}
