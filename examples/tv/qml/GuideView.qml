import QtQuick
import Tv

// The guide as a grid: a row for each day, the hours from left to right, and where now is.
FocusScope {
    id: view
    required property Service service
    required property var navigator
    readonly property GuideScreen model: GuideScreen { service: view.service }
    readonly property real minute: 6.4  // how wide it is
    readonly property int rowHeight: 118
    property int current: -1
    readonly property var cell: cells.count > 0 ? cells.itemAt(current) : null

    function move(index) {
        if (index >= 0 && index < cells.count) current = index;
    }
    Keys.onLeftPressed: move(current - 1)
    Keys.onRightPressed: move(current + 1)
    Keys.onUpPressed: move(model.programs.daysLater(current, -1))
    Keys.onDownPressed: move(model.programs.daysLater(current, 1))
    Keys.onReturnPressed: if (cell) navigator.openId(cell.programId)
    Keys.onSelectPressed: if (cell) navigator.openId(cell.programId)
    Connections {
        target: view.model
        function onStateChanged() {
            if (view.model.ready && view.current < 0) view.current = view.model.programs.now();
        }
    }

    Text {
        x: Style.margin
        y: 48
        text: view.cell ? view.cell.title : "Guide"
        color: Style.text
        font { pixelSize: Style.huge; bold: true }
    }
    Text {
        x: Style.margin
        y: 108
        text: view.cell ? view.cell.time + (view.cell.isNow ? "   ·   On now" : "") : ""
        color: Style.accent
        font.pixelSize: Style.normal
    }
    Column {
        x: Style.margin
        y: 208
        Repeater {
            model: view.model.days
            Text {
                required property string modelData
                height: view.rowHeight
                verticalAlignment: Text.AlignVCenter
                text: modelData
                color: Style.quiet
                font { pixelSize: Style.small; bold: true }
            }
        }
    }
    Item {
        anchors { fill: parent; leftMargin: 200; topMargin: 164 }
        clip: true
        Item {
            x: view.cell ? 120 - view.cell.x : 0
            height: parent.height
            Behavior on x { NumberAnimation { duration: Style.moment } }

            Repeater {
                model: 24
                Text {
                    required property int index
                    x: index * 60 * view.minute
                    text: String(index).padStart(2, "0") + ":00"
                    color: Style.quiet
                    font.pixelSize: Style.small
                }
            }
            Repeater {
                id: cells
                model: view.model.programs
                Rectangle {
                    id: program
                    required property int index
                    required property string title
                    required property string programId
                    required property string time
                    required property int day
                    required property int minute
                    required property int length
                    required property bool isNow
                    readonly property bool isCurrent: index === view.current
                    x: minute * view.minute
                    y: 44 + day * view.rowHeight
                    width: length * view.minute - 6
                    height: view.rowHeight - 10
                    radius: 8
                    color: isCurrent ? Style.accent : Style.surface
                    border { color: Style.accent; width: isNow ? 3 : 0 }
                    Text {
                        anchors { fill: parent; margins: 14 }
                        text: program.title
                        color: program.isCurrent ? Style.ground : Style.text
                        wrapMode: Text.Wrap
                        maximumLineCount: 2
                        elide: Text.ElideRight
                        font { pixelSize: Style.small; bold: program.isCurrent }
                    }
                    Text {
                        anchors { left: parent.left; bottom: parent.bottom; margins: 14 }
                        text: program.isNow ? "Now" : program.time
                        color: program.isCurrent ? Style.ground
                            : program.isNow ? Style.accent : Style.quiet
                        font.pixelSize: 15
                    }
                }
            }
        }
    }
    Notice {
        anchors.fill: parent
        source: view.model
        focus: !view.model.ready
    }
}
