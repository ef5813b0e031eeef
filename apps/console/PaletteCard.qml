// SPDX-License-Identifier: Apache-2.0
import QtQuick
import HalvoraDemo

DeskCard {
    id: card

    required property ShowConsole desk

    title: "Palette"
    note: {
        const chosen = desk.palettes.find(entry => entry.number === desk.look.paletteId);
        return chosen ? chosen.name : "unknown";
    }

    DeskChoices {
        width: parent.width
        columns: width < 560 ? 9 : 17
        cellHeight: 24
        entries: card.desk.palettes
        current: card.desk.look.paletteId
        what: "palette"
        showsColours: true
        onChosen: number => card.desk.set("paletteId", number)
    }
}
