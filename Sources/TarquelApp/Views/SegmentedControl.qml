import QtQuick
import QtQuick.Controls

// A choice of one among few. The arrow keys go from choice to choice.
FocusScope {
    id: control

    required property string label
    required property var choices
    property string current
    signal chosen(string choice)

    implicitWidth: row.implicitWidth + 4
    implicitHeight: row.implicitHeight + 4

    Accessible.role: Accessible.Grouping
    Accessible.name: label

    Rectangle {
        anchors.fill: parent
        radius: Theme.radius + 2
        color: Theme.dark ? "#17181b" : "#e2dfd9"
    }

    Row {
        id: row
        anchors.centerIn: parent

        Repeater {
            id: repeater
            model: control.choices

            // qmllint disable unqualified
            RadioButton {
                id: choice

                required property string modelData
                required property int index
                readonly property bool isCurrent: modelData === control.current

                text: modelData
                checked: isCurrent
                indicator: null
                hoverEnabled: true
                focus: isCurrent
                focusPolicy: isCurrent ? Qt.StrongFocus : Qt.ClickFocus
                leftPadding: 14
                rightPadding: 14
                topPadding: 4
                bottomPadding: 4
                onClicked: control.chosen(modelData)
                Keys.onLeftPressed: choose(index - 1)
                Keys.onRightPressed: choose(index + 1)

                function choose(other: int) {
                    const button = repeater.itemAt(other)
                    if (!button)
                        return
                    control.chosen(button.text)
                    button.forceActiveFocus(Qt.TabFocusReason)
                }

                Accessible.name: text
                Accessible.onPressAction: clicked()
                Accessible.onToggleAction: clicked()

                background: Rectangle {
                    radius: Theme.radius
                    color: choice.isCurrent ? (Theme.dark ? "#3c4048" : "#ffffff")
                                            : choice.hovered ? Theme.hover : "transparent"
                    border.width: choice.visualFocus ? 2 : choice.isCurrent ? 1 : 0
                    border.color: choice.visualFocus ? Theme.accent : Theme.separator
                }
                contentItem: Text {
                    text: choice.text
                    font: choice.font
                    color: Theme.text
                    horizontalAlignment: Text.AlignHCenter
                }
            }
            // qmllint enable unqualified
        }
    }
}
