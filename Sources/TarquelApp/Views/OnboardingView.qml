import QtQuick
import QtQuick.Layouts
import Tarquel

// The first start, without a model to ask.
FocusScope {
    id: onboarding

    required property AppState app

    ColumnLayout {
        anchors.centerIn: parent
        spacing: Theme.margin

        PlaceholderView {
            Layout.alignment: Qt.AlignHCenter
            drawing: "stack"
            title: "Welcome to tarquel"
            explanation: "Clips are described by a vision model: a hosted one with your own key, or a local one. There is neither in the settings yet. The built-in mock looks at nothing, and shows how it all works."
        }
        PushButton {
            Layout.alignment: Qt.AlignHCenter
            objectName: "useMockButton"
            text: "Use the built-in mock"
            prominent: true
            focus: true
            onClicked: onboarding.app.useMockProvider()
        }
    }
}
