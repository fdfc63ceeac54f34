import QtQuick
import QtQuick.Controls
import QtQuick.Window

// A look at a clip without leaving the queue: its picture, and the clip itself where this machine can play it.
Window {
    id: preview

    required property url file
    required property string fileName
    signal dismissed

    objectName: "quickLook"
    width: 860
    height: 560
    minimumWidth: 320
    minimumHeight: 240
    visible: true
    title: fileName
    color: Theme.window
    palette: Theme.palette
    flags: Qt.Dialog
    onClosing: dismissed()
    Component.onCompleted: requestActivate()

    // The clip, once it plays: an item of another module, which may be missing.
    readonly property var playing: player.item
    readonly property bool hasPicture: playing ? playing.hasPicture : false

    Item {
        id: stage
        anchors.fill: parent
        focus: true

        Accessible.role: Accessible.Pane
        Accessible.name: "Preview of " + preview.fileName

        Keys.onPressed: event => {
            switch (event.key) {
            case Qt.Key_Space:
            case Qt.Key_Escape:
            case Qt.Key_Y:
                if (event.key === Qt.Key_Y && !(event.modifiers & Qt.ControlModifier)) return
                if (!event.isAutoRepeat) preview.dismissed()
                break
            case Qt.Key_Return:
            case Qt.Key_Enter:
                if (preview.playing) preview.playing.toggle()
                break
            default: return
            }
            event.accepted = true
        }

        Image {
            id: poster
            objectName: "poster"
            anchors.fill: parent
            fillMode: Image.PreserveAspectFit
            source: "image://posters/" + encodeURIComponent(String(preview.file))
            visible: !preview.hasPicture
            Accessible.role: Accessible.Graphic
            Accessible.name: "Picture of " + preview.fileName
        }
        Spinner {
            anchors.centerIn: parent
            visible: poster.status === Image.Loading
            size: 36
            label: "Loading"
        }
        Label {
            objectName: "noPicture"
            anchors.centerIn: parent
            visible: poster.status === Image.Error && !preview.hasPicture
            text: "No preview of this clip"
            color: Theme.secondaryText
        }

        // A desktop without the multimedia module has the poster.
        Loader {
            id: player
            anchors.fill: parent
            active: GraphicsInfo.api !== GraphicsInfo.Unknown
            source: "QuickLookPlayer.qml"
            onLoaded: item.file = Qt.binding(() => preview.file)
        }
    }
}
