// SPDX-License-Identifier: Apache-2.0
// The console's colours and measures. One accent, for what is chosen or live; all distances are
// multiples of four.
pragma Singleton
import QtQuick

QtObject {
    readonly property color ground: "#0f1115"
    readonly property color card: "#171a20"
    readonly property color line: "#262b35"
    readonly property color raised: "#222732"
    readonly property color hovered: "#2b3140"
    readonly property color text: "#e9ebf1"
    readonly property color quiet: "#a3a9b8"
    readonly property color accent: "#8db4ff"
    readonly property color inkOverAccent: "#0c1526"

    readonly property int gap: 8
    readonly property int inset: 16
    readonly property int control: 32
    readonly property int radius: 6
    readonly property int textSize: 13
    readonly property int smallSize: 11
}
