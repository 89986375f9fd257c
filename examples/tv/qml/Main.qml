import QtQuick
import Tv

// The window: 1280 by 720 units, whatever its size, with the screens that are open.
FocusScope {
    id: root
    required property Service service
    property var screens: []  // the topmost last
    readonly property var screen: screens.length > 0 ? screens[screens.length - 1] : null

    function open(component, properties) {
        if (screen) screen.visible = false;
        const opened = component.createObject(stage, Object.assign(
            { service: service, navigator: root, width: stage.width, height: stage.height,
              focus: true }, properties));
        screens = screens.concat([opened]);
        opened.forceActiveFocus();
    }
    function openId(id) { open(detailView, { itemId: id }); }
    function openGuide() { open(guideView, {}); }
    function openSearch() { open(searchView, {}); }
    function openItem(item) { openId(item.id); }
    function back() {
        if (screens.length < 2) return;
        const closed = screen;
        screens = screens.slice(0, -1);
        screen.visible = true;
        screen.forceActiveFocus();
        closed.destroy();
    }
    Keys.onEscapePressed: back()
    Keys.onBackPressed: back()

    readonly property bool ready: service.ready
    onReadyChanged: if (ready && screens.length === 0) open(startView, {})

    Component { id: startView; StartView {} }
    Component { id: detailView; DetailView {} }
    Component { id: guideView; GuideView {} }
    Component { id: searchView; SearchView {} }

    Rectangle {
        anchors.fill: parent
        color: Style.ground
    }
    FocusScope {
        id: stage
        width: 1280
        height: 720
        focus: true
        scale: Math.min(root.width / width, root.height / height)
        transformOrigin: Item.TopLeft

        Loader {
            z: 1
            active: root.ready
            visible: root.screens.length === 1
            anchors { right: parent.right; rightMargin: Style.margin; top: parent.top; topMargin: 50 }
            sourceComponent: Banner { service: root.service }
        }
        Notice {
            anchors.fill: parent
            source: root.service
            focus: root.service.error !== ""
        }
    }
}
