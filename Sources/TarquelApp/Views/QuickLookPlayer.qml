import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import QtMultimedia
import Tarquel

// The clip, playing, with the little that is needed to steer it.
Item {
    id: view

    property url file
    readonly property bool canPlay: player.hasVideo && player.error === MediaPlayer.NoError
    // Not before the first picture, nor after the last one: what stands there then is the poster.
    readonly property bool hasPicture: canPlay && hasStarted && (pictures.item?.hasPicture ?? false)  // qmllint disable
    readonly property bool hasStarted: player.playbackState !== MediaPlayer.StoppedState && player.position > 0  // qmllint disable

    function toggle() {
        if (player.playbackState === MediaPlayer.PlayingState)
            player.pause()
        else
            player.play()
    }
    // A machine without sound has no output to make.
    Loader {
        id: sound
        active: mediaDevices.audioOutputs.length > 0
        sourceComponent: AudioOutput {}
    }
    MediaDevices {
        id: mediaDevices
    }
    PlayableFile {
        id: playable
        file: view.file
    }
    ClipOrientation {
        id: lie
        file: view.file
    }
    MediaPlayer {
        id: player
        // Whose pictures nobody can show does not play.
        source: lie.isKnown && pictures.item ? playable.address : ""
        onSourceChanged: if (String(player.source) !== "") play()
        videoOutput: pictures.item ? pictures.item.output : null  // qmllint disable
        audioOutput: sound.item as AudioOutput
    }
    Loader {
        id: pictures
        anchors.fill: parent
        anchors.bottomMargin: controls.height
        visible: view.hasPicture
        source: GraphicsInfo.api === GraphicsInfo.Software ? "VideoBySoftware.qml" : "VideoByGraphics.qml"
        onLoaded: item.clockwise = Qt.binding(() => lie.clockwise)
    }

    RowLayout {
        id: controls
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.margins: 8
        visible: view.canPlay
        spacing: 10

        PushButton {
            text: player.playbackState === MediaPlayer.PlayingState ? "Pause" : "Play"
            drawing: player.playbackState === MediaPlayer.PlayingState ? "pause" : "play"
            onClicked: view.toggle()
        }
        Slider {
            Layout.fillWidth: true
            to: player.duration  // qmllint disable
            value: player.position  // qmllint disable
            enabled: player.seekable
            onMoved: player.position = value
            Accessible.name: "Position"
        }
    }
}
