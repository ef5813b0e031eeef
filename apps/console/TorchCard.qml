// SPDX-License-Identifier: Apache-2.0
import QtQuick
import HalvoraDemo

DeskCard {
    id: card

    required property ShowConsole desk

    title: "Torch"
    note: "mode " + desk.look.ledMode

    DeskChoices {
        width: parent.width
        columns: 5
        entries: card.desk.torchModes
        current: card.desk.look.ledMode
        what: "torch"
        onChosen: number => card.desk.set("ledMode", number)
    }
    DeskSlider {
        objectName: "ledSpeed"
        width: parent.width
        label: "Speed"
        level: card.desk.look.ledSpeed
        onMoved: level => card.desk.set("ledSpeed", level)
    }
}
