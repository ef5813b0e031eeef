// SPDX-License-Identifier: Apache-2.0
import QtQuick
import HalvoraDemo

DeskCard {
    id: card

    required property ShowConsole desk
    readonly property consoleLook look: desk.look
    readonly property color own: Qt.rgba(look.red / 255, look.green / 255, look.blue / 255, 1)
    readonly property bool isOwn: look.paletteId === 0

    title: "Colour"
    note: isOwn ? "#" + own.toString().slice(1).toUpperCase() : "palette " + look.paletteId

    DeskSwatches {
        objectName: "swatches"
        width: parent.width
        entries: card.desk.swatches
        current: card.own
        isInForce: card.isOwn
        onChosen: colour => card.desk.setColour(colour)
    }
    DeskSlider {
        objectName: "red"
        width: parent.width
        label: "Red"
        tint: "#ff5c5c"
        level: card.look.red
        onMoved: level => card.desk.set("red", level)
    }
    DeskSlider {
        objectName: "green"
        width: parent.width
        label: "Green"
        tint: "#4fd66b"
        level: card.look.green
        onMoved: level => card.desk.set("green", level)
    }
    DeskSlider {
        objectName: "blue"
        width: parent.width
        label: "Blue"
        tint: "#5c8cff"
        level: card.look.blue
        onMoved: level => card.desk.set("blue", level)
    }
}
