// SPDX-License-Identifier: Apache-2.0
// The packet on the air, byte by byte, and below it what its parts say. A part under the pointer
// lights its bytes.
import QtQuick
import HalvoraDemo

DeskCard {
    id: card

    required property ShowConsole desk
    readonly property var pointed: parts.pointedAt < 0 ? null : desk.fields[parts.pointedAt]

    title: "Packet"
    note: "26 bytes of manufacturer data, ten times a second"

    PacketBytes {
        objectName: "packetBytes"
        width: parent.width
        desk: card.desk
        pointedFrom: card.pointed ? card.pointed.offset : 0
        pointedTo: card.pointed ? card.pointed.offset + card.pointed.bytes : 0
    }
    PacketParts {
        id: parts

        objectName: "packetParts"
        width: parent.width
        desk: card.desk
    }
}
