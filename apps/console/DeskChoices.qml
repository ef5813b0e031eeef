// SPDX-License-Identifier: Apache-2.0
// One of several, as a grid of buttons. An entry has a number and a name, and maybe colours.
import QtQuick
import HalvoraDemo

Grid {
    id: choices

    required property var entries
    required property int current
    /// What is chosen here, as a screen reader says it; and as the buttons' object names begin.
    required property string what
    property bool showsColours: false
    property int cellHeight: DeskStyle.control

    signal chosen(int number)

    spacing: 6

    Repeater {
        model: choices.entries

        DeskButton {
            required property var modelData
            readonly property DeskChoices grid: parent as DeskChoices

            objectName: grid.what + modelData.number
            width: Math.floor((grid.width - (grid.columns - 1) * grid.spacing)
                              / grid.columns)
            height: grid.cellHeight
            text: grid.showsColours && modelData.number === 0 ? "RGB" : modelData.name
            spokenName: grid.what + " " + modelData.name
            colours: grid.showsColours ? modelData.colours : []
            isSwitch: true
            isLit: modelData.number === grid.current
            onClicked: grid.chosen(modelData.number)
        }
    }
}
