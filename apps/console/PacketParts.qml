// SPDX-License-Identifier: Apache-2.0
// What the parts of a packet are, and what they say: where each begins, its name, its value and
// what that means.
import QtQuick
import HalvoraDemo

Grid {
    id: parts

    required property ShowConsole desk
    // The part under the pointer; -1 for none.
    property int pointedAt: -1

    columns: width < 560 ? 1 : width < 900 ? 2 : 3
    columnSpacing: 24

    Repeater {
        model: parts.desk.fields

        Item {
            id: part

            required property var modelData
            required property int index
            readonly property PacketParts parts: parent as PacketParts
            readonly property string value: parts.desk.packetValues[index]
            readonly property string meaning: parts.desk.packetMeanings[index]

            objectName: "part" + index
            width: Math.floor((parts.width - (parts.columns - 1) * parts.columnSpacing)
                              / parts.columns)
            height: 22
            Accessible.role: Accessible.StaticText
            Accessible.name: modelData.name + " " + value + " " + meaning

            HoverHandler {
                onHoveredChanged: {
                    if (hovered)
                        part.parts.pointedAt = part.index;
                    else if (part.parts.pointedAt === part.index)
                        part.parts.pointedAt = -1;
                }
            }
            Row {
                objectName: "partTexts"
                anchors.fill: parent
                spacing: DeskStyle.gap

                DeskText {
                    objectName: "partOffset"
                    width: 20
                    font.pixelSize: 12
                    color: DeskStyle.quiet
                    text: part.modelData.offset
                }
                DeskText {
                    objectName: "partName"
                    width: 96
                    font.pixelSize: 12
                    text: part.modelData.name
                }
                DeskText {
                    objectName: "partValue"
                    width: 40
                    font.pixelSize: 12
                    color: DeskStyle.accent
                    text: part.value
                }
                DeskText {
                    objectName: "partMeaning"
                    width: part.width - 180
                    font.pixelSize: 12
                    color: DeskStyle.quiet
                    text: part.meaning
                }
            }
        }
    }
}
