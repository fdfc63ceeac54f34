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

    background: Rectangle {
        color: Theme.window
    }

    Menu {
        title: "&File"
        Action {
            text: "Open Video…"
            shortcut: StandardKey.Open
            onTriggered: menu.app.presentOpenPanel()
        }
        Action {
            text: "Open Folder…"
            shortcut: "Ctrl+Shift+O"
            onTriggered: menu.folderRequested()
        }
        MenuSeparator {}
        Action {
            text: "Clear Completed"
            enabled: menu.app.jobs.hasDone
            onTriggered: menu.app.removeCompleted()
        }
        MenuSeparator {}
        Action {
            text: "Quit"
            shortcut: "Ctrl+Q"
            onTriggered: menu.quitRequested()
        }
    }
    Menu {
        title: "&Edit"
        Action {
            text: "Find"
            shortcut: StandardKey.Find
            onTriggered: menu.app.find()
        }
        MenuSeparator {}
        Action {
            text: "Preferences…"
            shortcut: "Ctrl+,"
            onTriggered: menu.preferencesRequested()
        }
    }
    Menu {
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
    Menu {
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
        MenuSeparator {}
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
    Menu {
        title: "&Help"
        Action {
            text: "Check for Updates…"
            enabled: menu.updater.canCheckForUpdates
        }
    }
}
