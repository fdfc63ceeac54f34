import QtQuick
import QtQuick.Controls
import Tarquel

// The window's commands. What concerns one job is said of the selected one.
MenuBar {
    id: menu

    required property AppState app
    required property UpdaterViewModel updater
    required property QueueSidebar sidebar
    signal preferencesRequested
    signal folderRequested
    signal quitRequested

    Accessible.role: Accessible.MenuBar
    Accessible.name: "Menu"

    delegate: MenuBarItem {
        id: entry
        Accessible.ignored: true  // it would be told as a menu bar of its own

        Item {
            anchors.fill: parent
            Accessible.role: Accessible.MenuItem
            Accessible.name: entry.text.replace(/&(.)/, "$1")
            Accessible.onPressAction: entry.triggered()
        }
    }

    // What desktops have for those who do not know a mnemonic.
    Shortcut {
        sequence: "F10"
        onActivated: (menu.itemAt(0) as MenuBarItem).triggered()
    }

    background: Rectangle {
        color: Theme.window
    }

    CommandMenu {
        title: "&File"
        Action {
            text: "Open Video…"
            shortcut: "Ctrl+O"
            onTriggered: menu.app.presentOpenPanel()
        }
        Action {
            text: "Open Folder…"
            shortcut: "Ctrl+Shift+O"
            onTriggered: menu.folderRequested()
        }
        CommandSeparator {}
        Action {
            text: "Clear Completed"
            enabled: menu.app.jobs.hasDone
            onTriggered: menu.app.removeCompleted()
        }
        CommandSeparator {}
        Action {
            text: "Quit"
            shortcut: "Ctrl+Q"
            onTriggered: menu.quitRequested()
        }
    }
    CommandMenu {
        title: "&Edit"
        Action {
            text: "Find"
            shortcut: "Ctrl+F"
            onTriggered: menu.app.find()
        }
        CommandSeparator {}
        Action {
            text: "Preferences…"
            shortcut: "Ctrl+,"
            onTriggered: menu.preferencesRequested()
        }
    }
    CommandMenu {
        title: "&View"
        Action {
            text: "Show Queue"
            shortcut: "Ctrl+1"
            onTriggered: menu.app.mode = "Queue"
        }
        Action {
            text: "Show Library"
            shortcut: "Ctrl+2"
            onTriggered: menu.app.mode = "Library"
        }
    }
    CommandMenu {
        title: "&Job"
        Action {
            text: "Retry"
            shortcut: "Ctrl+R"
            enabled: menu.sidebar.current.canRetry
            onTriggered: menu.sidebar.current.retry()
        }
        Action {
            text: "Cancel"
            shortcut: "Ctrl+."
            enabled: menu.sidebar.current.canCancel
            onTriggered: menu.sidebar.current.cancel()
        }
        CommandSeparator {}
        Action {
            text: "Quick Look"
            shortcut: "Ctrl+Y"
            enabled: menu.sidebar.current.exists
            onTriggered: menu.sidebar.current.quickLook()
        }
        Action {
            text: "Show in Finder"
            shortcut: "Ctrl+Shift+R"
            enabled: menu.sidebar.current.exists
            onTriggered: menu.sidebar.current.showInFileManager()
        }
    }
    CommandMenu {
        title: "&Help"
        Action {
            text: "Check for Updates…"
            enabled: menu.updater.canCheckForUpdates
        }
    }
}
