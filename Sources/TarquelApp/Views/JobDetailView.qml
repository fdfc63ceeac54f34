import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tarquel

// One job: what it is, how far, what the model saw, and what came of it.
Item {
    id: view

    required property JobDetail job
    required property DesktopActions desktop
    property string selectedTab: "Markdown"
    readonly property bool hasFailed: job.status === "failed" || job.status === "cancelled"

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: Theme.margin
        spacing: 10

        RowLayout {
            Layout.fillWidth: true
            spacing: 12

            Item {
                Layout.fillWidth: true
                implicitHeight: name.implicitHeight
                Accessible.role: Accessible.Heading
                Accessible.name: name.text

                Caption {
                    id: name
                    objectName: "detailName"
                    anchors.fill: parent
                    text: view.job.fileName
                    elide: Text.ElideMiddle
                    font.pixelSize: Theme.titleSize
                    font.bold: true
                    color: Theme.text
                    Accessible.ignored: true
                }
            }
            PushButton {
                objectName: "showInFinderButton"
                text: "Show in Finder"
                drawing: "folder"
                onClicked: view.desktop.showInFileManager(view.job.sourceURL)
            }
            StatusBadge {
                objectName: "detailStatus"
                status: view.job.status
                label: view.job.statusLabel
            }
        }

        ReadableText {
            objectName: "engineSubtitle"
            Layout.fillWidth: true
            Layout.topMargin: -6
            visible: text !== ""
            text: view.job.engineSubtitle
            font.pixelSize: Theme.captionSize
            color: Theme.secondaryText
            label: "Engine"
        }

        ThinProgressBar {
            objectName: "detailProgress"
            Layout.fillWidth: true
            visible: status === "extracting" || status === "calling" || status === "writing"
            readonly property string status: view.job.status
            indeterminate: view.job.status === "calling"
            value: view.job.progress
            label: view.job.statusLabel
        }

        Label {
            objectName: "detailError"
            Layout.fillWidth: true
            visible: text !== ""
            text: view.job.error
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            maximumLineCount: 4
            elide: Text.ElideRight
            color: Theme.red
        }

        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Theme.separator
        }

        FramesStripView {
            objectName: "framesStrip"
            Layout.fillWidth: true
            visible: timecodes.length > 0
            timecodes: view.job.timecodes
            source: view.job.frameSource
        }

        SegmentedControl {
            objectName: "viewPicker"
            label: "View"
            choices: ["Markdown", "JSON", "Source"]
            current: view.selectedTab
            onChosen: choice => view.selectedTab = choice
        }

        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            SelectableText {
                objectName: "resultText"
                anchors.fill: parent
                visible: view.job.hasResult && view.selectedTab !== "Source"
                label: view.selectedTab
                font.family: Theme.monospace
                text: !visible ? "" : view.selectedTab === "JSON" ? view.job.json : view.job.markdown
            }
            SourceTable {
                objectName: "sourceTable"
                anchors.fill: parent
                visible: view.job.hasResult && view.selectedTab === "Source"
                rows: visible ? view.job.sourceRows : []
            }
            FailurePanel {
                objectName: "failurePanel"
                anchors.fill: parent
                visible: !view.job.hasResult && view.hasFailed
                message: view.job.error || "Unknown error"
                hasRawResponse: view.job.hasRawResponse
                rawResponse: visible ? view.job.rawResponse : ""
            }
            WaitingBlock {
                objectName: "waitingBlock"
                anchors.centerIn: parent
                visible: !view.job.hasResult && !view.hasFailed
                status: view.job.status
                label: view.job.waitingLabel
                elapsed: view.job.elapsed
                progress: view.job.progress
            }
        }
    }
}
