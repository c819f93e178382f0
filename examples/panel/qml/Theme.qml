pragma Singleton
import QtQuick

// Colours, sizes and distances. Text has a contrast of 4.5:1 or more to its background in both themes.
QtObject {
    property string choice: "system"  // or "light", "dark"
    readonly property bool dark: choice === "dark" || (choice !== "light" && system.window.hslLightness < 0.5)
    readonly property SystemPalette system: SystemPalette {}

    readonly property color background: dark ? "#14171b" : "#f4f5f7"
    readonly property color card: dark ? "#1f242a" : "#ffffff"
    readonly property color pressed: dark ? "#2b323a" : "#e9ecf0"
    readonly property color text: dark ? "#e8ebee" : "#1b1f24"
    readonly property color secondaryText: dark ? "#a9b2bc" : "#57606a"
    readonly property color accent: dark ? "#8ab4f8" : "#1f5fbf"
    readonly property color accentText: dark ? "#0b1b33" : "#ffffff"
    readonly property color danger: dark ? "#f2958c" : "#b3261e"
    readonly property color dangerText: dark ? "#3b0d09" : "#ffffff"
    readonly property color dangerGround: dark ? "#3a2222" : "#fcebea"
    readonly property color outline: dark ? "#6b7683" : "#868e97"
    readonly property color line: dark ? "#30373f" : "#e3e6ea"
    readonly property color dim: dark ? "#b0000000" : "#80000000"

    readonly property int gap: 8
    readonly property int margin: 16
    readonly property int touch: 48  // the least size of a touch target
    readonly property int radius: 12

    readonly property int titleSize: 26
    readonly property int headingSize: 20
    readonly property int textSize: 16
    readonly property int smallSize: 13
}
