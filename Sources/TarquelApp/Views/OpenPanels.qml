import QtQuick
import QtQuick.Dialogs
import Tarquel

// The panels in which clips and folders are chosen: the desktop's where it has some, else Qt's.
Item {
    id: panels

    required property AppState app
    required property DesktopActions desktop

    function openFolder() {
        desktop.chooseFolder(Window.window, folderDialog.title)
    }
    Connections {
        target: panels.app
        function onOpenPanelRequested() {
            panels.desktop.chooseClips(panels.Window.window, fileDialog.title, panels.app.videoNamePatterns)
        }
    }
    Connections {
        target: panels.desktop
        function onChosen(urls) { panels.app.enqueue(urls) }
        function onOwnPanelWanted(forFolder) { (forFolder ? folderDialog : fileDialog).open() }
    }

    FileDialog {
        id: fileDialog
        objectName: "fileDialog"
        title: "Open Video…"
        fileMode: FileDialog.OpenFiles
        currentFolder: panels.desktop.videosFolder
        nameFilters: [`Video files (${Array.from(panels.app.videoNamePatterns).join(" ")})`, "All files (*)"]
        onAccepted: panels.app.enqueue(selectedFiles)
    }
    FolderDialog {
        id: folderDialog
        objectName: "folderDialog"
        title: "Open Folder…"
        currentFolder: panels.desktop.videosFolder
        onAccepted: panels.app.enqueue([selectedFolder])
    }
}
