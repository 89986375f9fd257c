import QtQuick
import Tv

// The start: the service's views, and the shelves of the one that is chosen.
FocusScope {
    id: start
    required property Service service
    required property var navigator
    property int view: 0
    readonly property var model: loader.item?.model ?? null

    Row {
        id: menu
        x: Style.margin
        y: 36
        spacing: 16
        Repeater {
            id: buttons
            model: start.service.views.concat([{ label: "Guide" }, { label: "Search" }])
            Button {
                required property var modelData
                required property int index
                text: modelData.label
                border { color: Style.accent; width: index === start.view ? 2 : 0 }
                onTriggered: modelData.id ? start.view = index
                    : index === buttons.count - 1 ? start.navigator.openSearch()
                    : start.navigator.openGuide()
                Keys.onRightPressed: buttons.itemAt(index + 1)?.forceActiveFocus()
                Keys.onLeftPressed: buttons.itemAt(index - 1)?.forceActiveFocus()
                KeyNavigation.down: loader
            }
        }
    }
    // Made anew with the view, so that what the last one was loading ends.
    Loader {
        id: loader
        anchors { fill: parent; topMargin: 118 }
        focus: true
        property var view: start.service.views[start.view]
        onViewChanged: { active = false; active = true; forceActiveFocus(); }
        sourceComponent: FocusScope {
            focus: true
            property ItemScreen model: ItemScreen {
                service: start.service
                itemId: loader.view.id
                label: loader.view.label
            }
            Keys.onUpPressed: buttons.itemAt(start.view).forceActiveFocus()
            ShelfList {
                anchors.fill: parent
                focus: true
                model: parent.model.shelves
                visible: parent.model.ready
                onOpened: item => start.navigator.openItem(item)
            }
            Notice {
                anchors.fill: parent
                source: parent.model
                focus: parent.model.error !== ""
            }
        }
    }
}
