import QtQuick
import Tv

// Letters to choose with the remote or to type on a keyboard, and what is found so far.
FocusScope {
    id: view
    required property Service service
    required property var navigator
    readonly property SearchScreen model: SearchScreen { service: view.service }

    function type(letter) {
        model.text = letter === "⌫" ? model.text.slice(0, -1) : model.text + letter;
    }
    Keys.onPressed: event => {
        if (event.key === Qt.Key_Backspace) type("⌫");
        else if (/^[\w ]$/.test(event.text)) type(event.text);
        else return;
        event.accepted = true;
    }

    Text {
        x: Style.margin
        y: 56
        text: view.model.text || "Search"
        color: view.model.text ? Style.text : Style.quiet
        font { pixelSize: Style.huge; bold: true }
    }
    GridView {
        id: letters
        x: Style.margin
        y: 148
        width: 6 * cellWidth
        height: 7 * cellHeight
        cellWidth: 56
        cellHeight: 56
        focus: true
        interactive: false
        model: [..."abcdefghijklmnopqrstuvwxyz0123456789", " ", "⌫"]
        KeyNavigation.right: shelves.count > 0 ? shelves : null
        delegate: Rectangle {
            id: key
            required property string modelData
            readonly property bool current: GridView.isCurrentItem && letters.activeFocus
            width: 50
            height: 50
            radius: 8
            color: current ? Style.accent : Style.surface
            Keys.onReturnPressed: view.type(modelData)
            Keys.onSelectPressed: view.type(modelData)
            Text {
                anchors.centerIn: parent
                text: key.modelData === " " ? "␣" : key.modelData.toUpperCase()
                color: key.current ? Style.ground : Style.text
                font { pixelSize: Style.normal; bold: key.current }
            }
        }
    }
    ShelfList {
        id: shelves
        anchors { fill: parent; leftMargin: 400; topMargin: 148 }
        model: view.model.shelves
        KeyNavigation.left: letters
        onOpened: item => view.navigator.openItem(item)
    }
    Text {
        anchors.centerIn: shelves
        text: view.model.error !== "" ? view.model.error
            : view.model.ready && shelves.count === 0 ? "Nothing found." : ""
        color: Style.text
        font.pixelSize: Style.large
    }
}
