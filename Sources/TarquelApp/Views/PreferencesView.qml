import QtQuick
import QtQuick.Window
import Tarquel

// Where the settings will be edited.
Window {
    id: preferences

    required property UpdaterViewModel updater

    objectName: "preferences"
    width: 640
    height: 680
    minimumWidth: 560
    minimumHeight: 500
    title: "Preferences"
    color: Theme.window
    palette: Theme.palette
    flags: Qt.Dialog

    Item {
        anchors.fill: parent
        focus: true
        Keys.onEscapePressed: preferences.close()

        PlaceholderView {
            anchors.centerIn: parent
            drawing: "settings"
            title: "Preferences"
            explanation: "Provider, keys, sampling, output and watched folders will be set here. Until then they stand in settings.json."
        }
        CheckForUpdatesView {
            anchors.bottom: parent.bottom
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.bottomMargin: Theme.margin
            updater: preferences.updater
        }
    }
}
