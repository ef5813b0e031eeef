// SPDX-License-Identifier: Apache-2.0
// A packet's bytes in hexadecimal, in a row; some of them may be pointed at.
import QtQuick
import HalvoraDemo

Row {
    id: bytes

    required property ShowConsole desk
    property int pointedFrom: 0
    property int pointedTo: 0
    readonly property int cell: Math.floor(width / 26)

    Accessible.role: Accessible.StaticText
    Accessible.name: "Packet " + desk.packetBytes

    Repeater {
        model: 26

        Rectangle {
            id: place

            required property int index
            readonly property PacketBytes bytes: parent as PacketBytes
            readonly property bool isPointed: index >= bytes.pointedFrom && index < bytes.pointedTo

            objectName: "byte" + index
            width: bytes.cell
            height: 28
            color: isPointed ? DeskStyle.accent : index % 2 ? DeskStyle.card : DeskStyle.ground

            DeskText {
                objectName: "byteText"
                anchors.centerIn: parent
                font.family: "monospace"
                font.pixelSize: place.width < 24 ? 11 : 13
                color: place.isPointed ? DeskStyle.inkOverAccent : DeskStyle.text
                text: place.bytes.desk.packetBytes[place.index]
            }
        }
    }
}
