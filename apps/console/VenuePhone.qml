// SPDX-License-Identifier: Apache-2.0
// One phone of the venue: whose seat it is at, its screen, and the packet that it last obeyed.
import QtQuick
import HalvoraDemo

Rectangle {
    id: card

    required property ShowConsole desk
    readonly property VenueShow venue: desk.venue

    color: DeskStyle.card
    radius: 10
    border.color: DeskStyle.line
    Accessible.role: Accessible.Grouping
    Accessible.name: venue.chosenSeat

    Column {
        id: words

        objectName: "venuePhoneWords"
        x: DeskStyle.inset
        y: 14
        width: card.width - 2 * DeskStyle.inset
        spacing: 4

        DeskText {
            objectName: "chosenSeat"
            width: parent.width
            font.weight: Font.DemiBold
            wrapMode: Text.WordWrap
            text: card.venue.chosenSeat
        }
        DeskText {
            objectName: "chosenStatus"
            width: parent.width
            color: DeskStyle.quiet
            font.pixelSize: 12
            wrapMode: Text.WordWrap
            text: card.venue.chosenStatus
        }
    }
    Item {
        id: stand

        objectName: "venuePhoneStand"
        anchors.top: words.bottom
        anchors.topMargin: 16
        anchors.bottom: packet.top
        anchors.bottomMargin: 16
        x: DeskStyle.inset
        width: words.width

        Item {
            objectName: "venuePhoneBody"
            anchors.centerIn: parent
            width: card.desk.screenWidth
            height: card.desk.screenHeight
            scale: Math.min(stand.width / (width + 24), stand.height / (height + 24))

            Rectangle {
                objectName: "venuePhoneScreen"
                anchors.fill: parent
                color: "black"
            }
            LightSurface {
                id: screen

                objectName: "venuePhoneLight"
                anchors.fill: parent
                Component.onCompleted: card.venue.showOn(screen)
            }
            Rectangle {
                objectName: "venuePhoneFrame"
                anchors.fill: parent
                anchors.margins: -12
                color: "transparent"
                border.color: "#3a3f4b"
                border.width: 12
                radius: 40
            }
        }
    }
    Column {
        id: packet

        objectName: "venuePhonePacket"
        x: DeskStyle.inset
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 14
        width: words.width
        spacing: 6

        DeskText {
            objectName: "chosenSource"
            width: parent.width
            color: DeskStyle.quiet
            font.pixelSize: DeskStyle.smallSize
            wrapMode: Text.WordWrap
            text: card.venue.chosenSource
        }
        DeskText {
            objectName: "chosenPacket"
            visible: text.length > 0
            width: parent.width
            font.family: "monospace"
            font.pixelSize: DeskStyle.smallSize
            wrapMode: Text.WordWrap
            text: card.venue.chosenPacket
            Accessible.role: Accessible.StaticText
            Accessible.name: "Packet " + text
        }
    }
}
