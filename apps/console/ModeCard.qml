// SPDX-License-Identifier: Apache-2.0
import QtQuick
import HalvoraDemo

DeskCard {
    id: card

    required property ShowConsole desk

    title: "Light"
    note: "mode " + desk.look.mode

    DeskChoices {
        width: parent.width
        columns: width < 700 ? 4 : 7
        entries: card.desk.modes
        current: card.desk.look.mode
        what: "mode"
        onChosen: number => card.desk.set("mode", number)
    }
    DeskSlider {
        objectName: "speed"
        width: parent.width
        label: "Speed"
        level: card.desk.look.speed
        onMoved: level => card.desk.set("speed", level)
    }
    DeskSlider {
        objectName: "master"
        width: parent.width
        label: "Master"
        level: card.desk.look.master
        shown: Math.round(level / 2.55) + " %"
        onMoved: level => card.desk.set("master", level)
    }
}
