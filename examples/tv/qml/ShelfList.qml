import QtQuick

// Shelves below each other. One is loaded when it comes into view, and further when the focus
// comes near its end.
ListView {
    id: list
    signal opened(item: var)

    spacing: 18
    cacheBuffer: 0
    clip: true
    preferredHighlightBegin: 0
    preferredHighlightEnd: 250
    highlightRangeMode: ListView.ApplyRange
    highlightMoveDuration: Style.moment

    delegate: FocusScope {
        id: row
        required property var modelData  // the shelf
        width: list.width
        height: 262
        Component.onCompleted: if (cards.count === 0) modelData.load()
        Keys.onReturnPressed: choose()
        Keys.onEnterPressed: choose()
        Keys.onSelectPressed: choose()

        function choose() {
            if (modelData.error !== "") modelData.load();
            else if (cards.currentItem) list.opened(cards.currentItem.item);
        }

        Text {
            x: Style.margin
            text: row.modelData.title
            color: row.activeFocus ? Style.text : Style.quiet
            font { pixelSize: Style.normal; bold: true }
        }
        Text {
            x: Style.margin
            y: 100
            visible: row.modelData.error !== ""
            text: row.modelData.error + "  Press OK to try again."
            color: row.activeFocus ? Style.accent : Style.quiet
            font.pixelSize: Style.normal
        }
        ListView {
            id: cards
            y: 46
            width: parent.width
            height: 212
            focus: true
            orientation: ListView.Horizontal
            spacing: 22
            cacheBuffer: 0
            model: row.modelData.items
            // The focus stays at the left margin while the cards move below it.
            preferredHighlightBegin: Style.margin
            preferredHighlightEnd: Style.margin + 256
            highlightRangeMode: ListView.StrictlyEnforceRange
            highlightMoveDuration: Style.moment
            onCurrentIndexChanged: if (currentIndex > count - 5) row.modelData.load()
            delegate: Card {
                y: 6
                current: ListView.isCurrentItem && row.activeFocus
            }
        }
    }
}
