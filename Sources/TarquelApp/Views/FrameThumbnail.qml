import QtQuick
import QtQuick.Controls
import QtQuick.Window

// One frame of the strip with its timecode.
AbstractButton {
    id: thumbnail

    required property string modelData
    required property int index
    property string source

    objectName: "frameThumbnail"
    hoverEnabled: true
    width: 140
    height: 80 + 6 + caption.implicitHeight
    focusPolicy: ListView.isCurrentItem || activeFocus ? Qt.StrongFocus : Qt.ClickFocus
    Accessible.name: `Frame ${index + 1}, ${modelData}`
    Accessible.role: Accessible.Button
    Accessible.onPressAction: clicked()
    ToolTip.visible: hovered
    ToolTip.delay: 500
    ToolTip.text: "Click to view full size — " + modelData

    Rectangle {
        width: 140
        height: 80
        radius: Theme.radius
        color: Theme.quietSelection

        Icon {
            objectName: "brokenFrame"
            anchors.centerIn: parent
            visible: picture.status === Image.Error
            name: "warning"
            color: Theme.orange
            size: 24
        }
        Image {
            objectName: "framePicture"
            id: picture
            anchors.fill: parent
            source: thumbnail.source
            sourceSize.width: Math.round(140 * Screen.devicePixelRatio)
            sourceSize.height: Math.round(80 * Screen.devicePixelRatio)
            Accessible.ignored: true
        }
        // The line within lets it stand out from a picture of any colour.
        FocusRing {
            id: ring
            anchors.fill: parent
            shown: thumbnail.activeFocus || thumbnail.hovered

            Rectangle {
                anchors.fill: parent
                anchors.margins: 2
                visible: ring.shown
                radius: Theme.radius - 2
                color: "transparent"
                border.width: 2
                border.color: Theme.window
            }
        }
    }
    Text {
        id: caption
        objectName: "frameTimecode"
        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        text: thumbnail.modelData
        font.pixelSize: Theme.captionSize
        color: Theme.secondaryText
        Accessible.ignored: true
    }
}
