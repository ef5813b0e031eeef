// SPDX-License-Identifier: Apache-2.0
// The venue from above with a phone on many of its seats, and one of the phones as its user sees
// it.
import QtQuick
import HalvoraDemo

Rectangle {
    id: stage

    required property ShowConsole desk
    readonly property VenueShow venue: desk.venue
    readonly property bool isClose: venue.chosen >= 0
    // Whoever plays a show has the whole hall and a phone side by side.
    readonly property bool isBeside: isClose && desk.cues.isOpen

    color: "#0c0d10"
    radius: 10
    border.color: DeskStyle.line
    clip: true

    VenueSurface {
        id: surface

        objectName: "venueSurface"
        anchors.fill: parent
        anchors.margins: 12
        anchors.bottomMargin: 44
        anchors.rightMargin: stage.isBeside ? close.width + 24 : 12
        venue: stage.venue
        staysWhole: stage.desk.cues.isOpen
        covered: stage.isClose && !stage.isBeside ? close.width + 12 : 0
        Accessible.role: Accessible.Graphic
        Accessible.name: "Venue with " + stage.venue.phones + " phones"
                         + (cursorSeat.length > 0 ? ", " + cursorSeat : "")
        Accessible.description: hint.text
        Accessible.focusable: true

        PinchHandler {
            id: pinch

            property real reached: 1

            target: null
            onActiveChanged: reached = 1
            onActiveScaleChanged: {
                surface.zoomAt(centroid.position, activeScale / reached);
                reached = activeScale;
            }
        }
        // Where the stage is, and which section is which.
        DeskText {
            objectName: "venueStageName"
            visible: stage.venue.isReady && surface.stageEdge > 14
            anchors.horizontalCenter: parent.horizontalCenter
            y: Math.max(0, Math.min(surface.stageEdge - height - 4, parent.height - height))
            color: DeskStyle.quiet
            font.pixelSize: DeskStyle.smallSize
            text: "Stage"
        }
        Repeater {
            model: surface.sections

            DeskText {
                required property var modelData
                readonly property rect place: modelData.place

                objectName: "sectionName"
                visible: implicitWidth + 8 <= place.width
                x: place.x + (place.width - implicitWidth) / 2
                y: place.y + (place.height - implicitHeight) / 2
                font.pixelSize: DeskStyle.smallSize
                font.weight: Font.DemiBold
                style: Text.Outline
                styleColor: "black"
                text: modelData.name
                Accessible.ignored: true
            }
        }
        Rectangle {
            readonly property rect place: surface.cursorPlace

            objectName: "cursorRing"
            visible: surface.activeFocus && place.width > 0 && surface.cursor !== stage.venue.chosen
            x: place.x - 4
            y: place.y - 4
            width: place.width + 8
            height: place.height + 8
            radius: width / 2
            color: "transparent"
            border.width: 2
            border.color: DeskStyle.text
        }
        Rectangle {
            readonly property rect place: surface.chosenPlace

            objectName: "chosenRing"
            visible: place.width > 0
            x: place.x - 5
            y: place.y - 5
            width: place.width + 10
            height: place.height + 10
            radius: width / 2
            color: "transparent"
            border.width: 3
            border.color: DeskStyle.accent
        }
        Rectangle {
            readonly property real wide: seatName.implicitWidth + 16

            objectName: "cursorLabel"
            visible: surface.activeFocus && surface.cursorPlace.width > 0
                     && surface.cursor !== stage.venue.chosen
            x: Math.max(0, Math.min(surface.cursorPlace.x + surface.cursorPlace.width / 2 - wide / 2,
                                    surface.width - wide))
            y: surface.cursorPlace.y > 40 ? surface.cursorPlace.y - 36
                                          : surface.cursorPlace.y + surface.cursorPlace.height + 10
            width: wide
            height: 26
            radius: DeskStyle.radius
            color: DeskStyle.raised
            border.color: DeskStyle.line

            DeskText {
                id: seatName

                objectName: "cursorName"
                anchors.centerIn: parent
                font.pixelSize: 12
                text: surface.cursorSeat
                Accessible.ignored: true
            }
        }
    }

    VenuePhone {
        id: close

        objectName: "venuePhone"
        visible: stage.isClose
        anchors.top: parent.top
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.margins: 12
        width: Math.round(Math.min(300, stage.width * 0.42))
        desk: stage.desk
    }

    Column {
        objectName: "venueReading"
        visible: !stage.venue.isReady
        anchors.centerIn: parent
        width: Math.min(320, parent.width - 48)
        spacing: 16

        DeskText {
            objectName: "venueMessage"
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            text: stage.venue.failure.length > 0 ? stage.venue.failure
                                                 : "Working out what every seat will show"
        }
        Rectangle {
            objectName: "venueProgress"
            visible: stage.venue.failure.length === 0
            width: parent.width
            height: 4
            radius: 2
            color: DeskStyle.line
            Accessible.role: Accessible.ProgressBar
            Accessible.name: "Reading the venue, " + Math.round(stage.venue.progress * 100) + " %"

            Rectangle {
                objectName: "venueProgressDone"
                width: parent.width * stage.venue.progress
                height: parent.height
                radius: 2
                color: DeskStyle.accent
            }
        }
        DeskButton {
            objectName: "venueCancel"
            anchors.horizontalCenter: parent.horizontalCenter
            text: stage.venue.failure.length > 0 ? "Back" : "Cancel"
            spokenName: text + ", show the phone"
            onClicked: stage.venue.isOpen = false
        }
    }

    Item {
        objectName: "venueFoot"
        visible: stage.venue.isReady
        anchors.left: parent.left
        anchors.right: stage.isClose ? close.left : parent.right
        anchors.bottom: parent.bottom
        anchors.margins: 16
        height: 16

        DeskText {
            id: count

            objectName: "venueCount"
            anchors.left: parent.left
            font.pixelSize: DeskStyle.smallSize
            text: stage.venue.phones.toLocaleString(Qt.locale("en_GB"), "f", 0) + " phones in "
                  + stage.venue.seats.toLocaleString(Qt.locale("en_GB"), "f", 0) + " seats"
        }
        DeskText {
            id: hint

            objectName: "venueHint"
            anchors.left: count.right
            anchors.leftMargin: 16
            anchors.right: parent.right
            horizontalAlignment: Text.AlignRight
            color: DeskStyle.quiet
            font.pixelSize: DeskStyle.smallSize
            text: !stage.desk.isOnAir && stage.desk.packetsSent > 0
                  ? "Off air: phones hold their last look until they have heard nothing for seven seconds"
                  : stage.isClose ? "Esc back to the venue"
                                : "Wheel, + and − zoom   Drag moves   Arrows and Enter look at a phone"
        }
    }
}
