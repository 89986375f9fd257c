import QtQuick

// A button that the remote's arrows reach: `triggered` when it is pressed.
Rectangle {
    id: button
    property alias text: label.text
    signal triggered

    width: label.width + 48
    height: 52
    radius: 26
    color: activeFocus ? Style.accent : Style.surface
    Keys.onReturnPressed: triggered()
    Keys.onEnterPressed: triggered()
    Keys.onSelectPressed: triggered()

    Text {
        id: label
        anchors.centerIn: parent
        color: button.activeFocus ? Style.ground : Style.text
        font.pixelSize: Style.normal
        font.bold: button.activeFocus
    }
}
