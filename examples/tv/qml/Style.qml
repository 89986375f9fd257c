pragma Singleton
import QtQuick

// Colours and sizes, for a window of 1280 by 720 units.
QtObject {
    readonly property color ground: "#0d1117"
    readonly property color surface: "#1b222c"
    readonly property color text: "#f2f4f7"
    readonly property color quiet: "#9aa7b6"
    readonly property color accent: "#f2c14e"

    readonly property int margin: 64
    readonly property int small: 18
    readonly property int normal: 22
    readonly property int large: 28
    readonly property int huge: 46

    readonly property int moment: 120  // of an animation, in milliseconds
}
