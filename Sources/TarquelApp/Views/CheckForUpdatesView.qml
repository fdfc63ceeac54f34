import Tarquel

PushButton {
    required property UpdaterViewModel updater

    text: "Check for Updates…"
    enabled: updater.canCheckForUpdates
}
