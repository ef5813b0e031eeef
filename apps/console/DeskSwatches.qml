// SPDX-License-Identifier: Apache-2.0
// Colours to choose from, in one row.
import QtQuick
import HalvoraDemo

Row {
    id: swatches

    required property var entries
    required property color current
    // Whether the current colour is in force at all.
    property bool isInForce: true

    signal chosen(color colour)

    spacing: 6

    Repeater {
        model: swatches.entries

        DeskButton {
            required property color modelData
            required property int index
            readonly property DeskSwatches row: parent as DeskSwatches

            objectName: "swatch" + index
            width: Math.floor((row.width - (row.entries.length - 1) * row.spacing)
                              / row.entries.length)
            spokenName: "colour " + modelData
            colours: [modelData]
            isSwitch: true
            isLit: row.isInForce && Qt.colorEqual(modelData, row.current)
            onClicked: row.chosen(modelData)
        }
    }
}
