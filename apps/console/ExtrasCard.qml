// SPDX-License-Identifier: Apache-2.0
import QtQuick
import HalvoraDemo

DeskCard {
    id: card

    required property ShowConsole desk

    title: "Gobo and vibration"

    DeskChoices {
        width: parent.width
        columns: 6
        entries: card.desk.gobos
        current: card.desk.look.gobo
        what: "gobo"
        onChosen: number => card.desk.set("gobo", number)
    }
    DeskChoices {
        width: parent.width
        columns: 4
        entries: card.desk.vibrations
        current: card.desk.look.vibrate
        what: "vibrate"
        onChosen: number => card.desk.set("vibrate", number)
    }
}
