// SPDX-License-Identifier: Apache-2.0
// Colours side by side, of equal widths.
import QtQuick
import HalvoraDemo

Row {
    id: strip

    required property var colours

    Repeater {
        model: strip.colours

        Rectangle {
            required property color modelData
            readonly property ColourStrip strip: parent as ColourStrip

            objectName: "stripColour"
            width: strip.width / strip.colours.length
            height: strip.height
            color: modelData
        }
    }
}
