// SPDX-License-Identifier: Apache-2.0
import QtQuick
import HalvoraDemo

DeskCard {
    id: card

    required property ShowConsole desk
    readonly property var senders: {
        const all = [{number: 0, name: "All"}];
        for (let number = 1; number <= desk.transmitters; ++number)
            all.push({number: number, name: "Only " + number});
        return all;
    }

    title: "Air"
    note: desk.packetsSent + " sent, " + desk.packetsHeard + " heard"

    DeskSlider {
        objectName: "transmitters"
        width: parent.width
        label: "Senders"
        level: card.desk.transmitters
        least: 1
        greatest: card.desk.mostTransmitters
        onMoved: level => card.desk.transmitters = level
    }
    DeskChoices {
        width: parent.width
        columns: 5
        entries: card.senders
        current: card.desk.sender
        what: "sender"
        onChosen: number => card.desk.sender = number
    }
    DeskSlider {
        objectName: "loss"
        width: parent.width
        label: "Loss"
        level: card.desk.loss
        greatest: 100
        shown: level + " %"
        onMoved: level => card.desk.loss = level
    }
}
