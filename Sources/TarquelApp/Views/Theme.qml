pragma Singleton
import QtQuick

// Colours, sizes and times of the whole window. Light or dark follows the application's palette.
QtObject {
    id: theme

    readonly property SystemPalette system: SystemPalette {}
    readonly property bool dark: system.window.hslLightness < 0.5

    readonly property color window: system.window
    readonly property color base: system.base
    readonly property color text: system.windowText
    readonly property color secondaryText: dark ? "#adb2ba" : "#565d68"
    readonly property color accent: system.highlight
    readonly property color accentText: dark ? "#8db3f7" : "#1d52ab"
    readonly property color separator: dark ? "#393b41" : "#dddad4"
    readonly property color sidebar: dark ? "#222428" : "#efede9"
    readonly property color hover: dark ? "#2c2f34" : "#e6e3dd"
    readonly property color selection: dark ? "#2d4266" : "#d3e1f9"
    readonly property color quietSelection: dark ? "#34373d" : "#dfdcd6"
    readonly property color pill: Qt.alpha(text, 0.07)
    readonly property color green: dark ? "#3fa563" : "#23803f"
    readonly property color greenText: dark ? "#6ccf8f" : "#1b6b34"
    readonly property color red: dark ? "#f79ba0" : "#b3242f"
    readonly property color redFill: dark ? "#ee6a71" : "#c5303a"
    readonly property color orange: dark ? "#eda24e" : "#a85c00"

    // For the controls of a window, which do not ask the application.
    readonly property Palette palette: Palette {
        window: theme.system.window
        windowText: theme.system.windowText
        base: theme.system.base
        alternateBase: theme.system.alternateBase
        text: theme.system.text
        placeholderText: theme.system.placeholderText
        button: theme.system.button
        buttonText: theme.system.buttonText
        brightText: "#ffffff"
        highlight: theme.system.highlight
        highlightedText: theme.system.highlightedText
        toolTipBase: theme.dark ? "#3a3d44" : "#2b2d32"
        toolTipText: "#f4f4f5"
        light: theme.system.light
        midlight: theme.system.midlight
        mid: theme.system.mid
        dark: theme.system.dark
        shadow: theme.system.shadow
        disabled {
            windowText: theme.disabledText
            text: theme.disabledText
            buttonText: theme.disabledText
        }
    }
    readonly property color disabledText: dark ? "#74787f" : "#9a9da3"

    readonly property int gap: 8
    readonly property int margin: 20
    readonly property int radius: 6
    readonly property int iconSize: 20

    // Sizes of text, in pixels, from the one that the desktop sets.
    readonly property real bodySize: Math.max(Application.font.pixelSize, Application.font.pointSize * 96 / 72)
    readonly property real captionSize: bodySize * 0.87
    readonly property real titleSize: bodySize * 1.25
    readonly property font bodyFont: Application.font
    readonly property font captionFont: Qt.font({ family: bodyFont.family, pixelSize: captionSize })
    // A row of the queue, with room for its two lines; a section's title; a command of a menu.
    readonly property int rowHeight: Math.max(52, Math.ceil(bodySize * 2.9))
    readonly property int titleHeight: Math.max(32, Math.ceil(captionSize * 2.4))
    readonly property int commandHeight: Math.max(30, Math.ceil(bodySize * 2))
    readonly property string monospace: "monospace"

    // A wish of the desktop's user: nothing glides or fades then.
    property bool reducedMotion: false
    readonly property int quick: reducedMotion ? 0 : 120
    readonly property int calm: reducedMotion ? 0 : 220

    // Colour and drawing of each status of a job.
    readonly property var statusColors: ({
        queued: secondaryText, extracting: accentText, calling: accentText, writing: accentText,
        done: green, failed: redFill, cancelled: secondaryText
    })
    readonly property var statusTextColors: ({
        queued: secondaryText, extracting: accentText, calling: accentText, writing: accentText,
        done: greenText, failed: red, cancelled: secondaryText
    })
    readonly property var statusIcons: ({
        queued: "clock", extracting: "film", calling: "bolt", writing: "save",
        done: "done", failed: "failed", cancelled: "cancelled"
    })
}
