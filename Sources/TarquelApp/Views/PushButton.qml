import QtQuick
import QtQuick.Controls

// A button with a drawing of the window's own before its text.
Button {
    id: button

    property string drawing
    property bool prominent: false

    leftPadding: drawing ? 10 : 14
    rightPadding: 14
    topPadding: 5
    bottomPadding: 5
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true  // also where no theme of the desktop says so
    Accessible.name: text
    Accessible.onPressAction: if (enabled) button.clicked()

    background: Rectangle {
        implicitHeight: 28
        radius: Theme.radius
        color: {
            if (button.prominent)
                return button.down ? Qt.darker(Theme.accent, 1.2) : button.hovered ? Qt.darker(Theme.accent, 1.08) : Theme.accent
            return button.down ? Theme.quietSelection : button.hovered ? Theme.hover : Theme.base
        }
        opacity: button.enabled ? 1 : 0.5
        border.width: button.prominent ? 0 : 1
        border.color: Theme.separator

        Rectangle {
            anchors.fill: parent
            anchors.margins: -3
            radius: Theme.radius + 3
            color: "transparent"
            border.width: 2
            border.color: Theme.accent
            visible: button.visualFocus
        }
    }
    contentItem: Row {
        spacing: 6
        opacity: button.enabled ? 1 : 0.45

        Icon {
            visible: button.drawing !== ""
            anchors.verticalCenter: parent.verticalCenter
            name: button.drawing
            size: 16
            color: button.prominent ? "#ffffff" : Theme.text
        }
        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: button.text
            font: button.font
            color: button.prominent ? "#ffffff" : Theme.text
        }
    }
}
