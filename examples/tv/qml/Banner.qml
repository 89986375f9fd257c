import QtQuick
import Tv

// What is on now.
Row {
    id: banner
    required property Service service
    property OnAir model: OnAir { service: banner.service }
    visible: model.title !== ""
    spacing: 12

    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        width: 12
        height: 12
        radius: 6
        color: Style.accent
    }
    Text {
        width: Math.min(implicitWidth, 320)
        text: banner.model.title
        color: Style.text
        elide: Text.ElideRight
        font.pixelSize: Style.small
    }
    Text {
        text: "until " + banner.model.until
        color: Style.quiet
        font.pixelSize: Style.small
    }
}
