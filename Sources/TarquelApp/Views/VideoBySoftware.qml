import Tarquel
import Tarquel.Playback

// What plays, where windows are drawn in software.
PaintedVideo {
    id: pictures
    objectName: "playedPicture"

    readonly property alias output: tap

    FrameTap {
        id: tap
        screen: pictures
    }
}
