import QtQuick
import Tv

// A page or a video: what it is, what can be done with it, and the shelves that belong to it.
FocusScope {
    id: view
    required property Service service
    required property var navigator
    required property string itemId
    readonly property ItemScreen model: ItemScreen {
        service: view.service
        itemId: view.itemId
    }
    readonly property bool isPlaying: player.source.toString() !== ""

    function act(action) {
        if (action.kind === "play" && model.item.isVideo) player.play(model.stream(action.id));
        else if (action.kind === "tv") navigator.openGuide();
        else navigator.openId(action.id);
    }

    Image {
        id: backdrop
        anchors { right: parent.right; top: parent.top }
        width: 800
        height: 450
        source: view.model.ready ? view.model.item.image(width, height) : ""
        asynchronous: true
        Rectangle {
            anchors.fill: parent
            gradient: Gradient {
                orientation: Gradient.Horizontal
                GradientStop { position: 0; color: Style.ground }
                GradientStop { position: 0.55; color: "transparent" }
            }
        }
        Rectangle {
            anchors.fill: parent
            gradient: Gradient {
                GradientStop { position: 0.6; color: "transparent" }
                GradientStop { position: 1; color: Style.ground }
            }
        }
    }
    Column {
        x: Style.margin
        y: 84
        width: 620
        spacing: 14
        visible: view.model.ready
        Text {
            width: parent.width
            text: view.model.item.title
            color: Style.text
            wrapMode: Text.Wrap
            maximumLineCount: 2
            elide: Text.ElideRight
            font { pixelSize: Style.huge; bold: true }
        }
        Text {
            text: [view.model.item.subheading, view.model.item.badge].filter(t => t).join("   ·   ")
            color: Style.accent
            font.pixelSize: Style.normal
        }
        Text {
            width: parent.width
            text: view.model.item.description
            color: Style.text
            wrapMode: Text.Wrap
            maximumLineCount: 3
            font.pixelSize: Style.normal
            lineHeight: 1.25
        }
    }
    ListView {
        id: buttons
        x: Style.margin
        y: 346
        width: parent.width - x
        height: 52
        orientation: ListView.Horizontal
        spacing: 16
        focus: view.model.ready && count > 0
        model: view.model.item.actions
        KeyNavigation.down: shelves
        delegate: Button {
            required property var modelData
            text: modelData.label
            onTriggered: view.act(modelData)
        }
    }
    ShelfList {
        id: shelves
        anchors { fill: parent; topMargin: 432 }
        focus: view.model.ready && buttons.count === 0
        model: view.model.shelves
        KeyNavigation.up: buttons
        onOpened: item => view.navigator.openItem(item)
    }
    Notice {
        anchors.fill: parent
        source: view.model
        focus: !view.model.ready
    }

    // Qt Multimedia may not be there; the app then says so instead.
    Loader {
        id: player
        property url source
        anchors.fill: parent
        function play(stream) {
            source = stream;
            setSource("Player.qml", { stream: stream });
            forceActiveFocus();
        }
        Keys.onEscapePressed: close()
        Keys.onBackPressed: close()
        function close() {
            source = "";
            setSource("");
            buttons.forceActiveFocus();
        }
        Rectangle {
            anchors.fill: parent
            visible: player.status === Loader.Error
            color: Style.ground
            Text {
                anchors.centerIn: parent
                text: "There is no player on this device.\nInstall Qt Multimedia to watch."
                horizontalAlignment: Text.AlignHCenter
                color: Style.text
                font.pixelSize: Style.large
            }
        }
    }
}
