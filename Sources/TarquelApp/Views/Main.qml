import QtQuick
import QtQuick.Controls
import Tarquel

// The main window: its commands, and what stands in it.
ApplicationWindow {
    id: window

    required property AppState app
    required property AppDelegate delegate
    required property JobDetail detail
    required property DesktopActions desktop
    required property UpdaterViewModel updater

    width: 1180
    height: 760
    minimumWidth: 980
    minimumHeight: 600
    visible: true
    color: Theme.window
    palette: Theme.palette
    title: app.activeJobCount > 0 ? `(${app.activeJobCount}) tarquel` : "tarquel"

    // A palette is taken over as it is at that moment.
    readonly property bool dark: Theme.dark
    onDarkChanged: Qt.callLater(() => palette = Theme.palette)  // qmllint disable

    Binding {
        target: Theme
        property: "reducedMotion"
        value: window.desktop.reducedMotion
    }

    // The program ends through the quit guard alone.
    onClosing: close => {
        close.accepted = false
        delegate.terminate()
    }

    menuBar: MainMenu {
        app: window.app
        updater: window.updater
        sidebar: content.sidebar
        onPreferencesRequested: preferences.show()
        onFolderRequested: openPanels.openFolder()
        onQuitRequested: window.delegate.terminate()
    }

    header: ContentToolbar {
        visible: !window.app.needsOnboarding
        app: window.app
    }

    ContentView {
        id: content
        anchors.fill: parent
        visible: !window.app.needsOnboarding
        app: window.app
        detail: window.detail
        desktop: window.desktop
    }

    OnboardingView {
        anchors.fill: parent
        visible: window.app.needsOnboarding
        app: window.app
    }

    OpenPanels {
        id: openPanels
        app: window.app
        desktop: window.desktop
    }

    Connections {
        target: window.delegate
        function onQuitQuestion(message, informativeText) { quitAlert.ask(message, informativeText) }
    }

    Alert {
        id: quitAlert
        acceptText: "Quit"
        rejectText: "Cancel"
        onAccepted: window.delegate.terminateNow()
    }

    Alert {
        id: errorAlert
        readonly property string lastError: window.app.lastError
        rejectText: "OK"
        onLastErrorChanged: lastError ? ask(lastError, "") : close()
        onRejected: window.app.lastError = ""
    }

    PreferencesView {
        id: preferences
        updater: window.updater
        transientParent: window
    }
}
