import QtQuick

// What stands in the place of a screen whose content is not there: it is on its way, or it failed
// and can be tried again.
FocusScope {
    id: notice
    required property var source  // what loads
    visible: !source.ready

    Text {
        anchors.centerIn: parent
        visible: notice.source.loading
        text: "One moment …"
        color: Style.quiet
        font.pixelSize: Style.large
    }
    Column {
        anchors.centerIn: parent
        visible: notice.source.error !== ""
        spacing: 32
        Text {
            text: notice.source.error
            color: Style.text
            font.pixelSize: Style.large
        }
        Button {
            anchors.horizontalCenter: parent.horizontalCenter
            focus: true
            text: "Try again"
            onTriggered: notice.source.load()
        }
    }
}
