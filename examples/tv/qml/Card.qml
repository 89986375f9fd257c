import QtQuick

// An item on a shelf: its picture, and its title below.
Item {
    id: card
    required property var item
    required property bool current  // whether it has the focus

    width: 256
    height: 206

    Rectangle {  // the frame of the one that has the focus
        anchors.fill: picture
        anchors.margins: -5
        radius: 12
        color: card.current ? Style.accent : "transparent"
    }
    Rectangle {
        id: picture
        width: parent.width
        height: 144
        radius: 8
        color: Style.surface
        Image {
            anchors.fill: parent
            source: card.item.image(width, height)
            asynchronous: true
            fillMode: Image.PreserveAspectCrop
        }
    }
    Text {
        anchors { top: picture.bottom; topMargin: 11; left: parent.left; right: parent.right }
        text: card.item.title
        color: card.current ? Style.text : Style.quiet
        elide: Text.ElideRight
        font { pixelSize: Style.small; bold: card.current }
    }
    Text {
        anchors { bottom: parent.bottom; left: parent.left; right: parent.right }
        text: card.item.badge || card.item.subheading
        color: Style.quiet
        elide: Text.ElideRight
        font.pixelSize: 15
    }
}
