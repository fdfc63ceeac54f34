import QtQuick
import Tarquel

// Where finished descriptions will be searched.
FocusScope {
    id: library

    required property AppState app

    PlaceholderView {
        anchors.centerIn: parent
        drawing: "library"
        title: "The library"
        explanation: "Folders of described clips will be searched here, by words, by facets and by meaning. Until then, tarquel-library does it in a terminal."
    }
}
