// SPDX-License-Identifier: Apache-2.0
import QtQuick
import HalvoraDemo

DeskCard {
    id: card

    required property ShowConsole desk
    readonly property bool hasMap: desk.frames > 0

    title: "Pixel map"
    note: hasMap ? "frame " + desk.frame + " of " + desk.frames : "each phone shows its own seat"

    DeskChoices {
        width: parent.width
        columns: 5
        entries: card.desk.maps
        current: card.desk.look.pixelMapId
        what: "map"
        onChosen: number => card.desk.set("pixelMapId", number)
    }
    Item {
        objectName: "mapTransport"
        width: parent.width
        height: DeskStyle.control

        DeskButton {
            id: play

            objectName: "playMap"
            width: 72
            enabled: card.hasMap
            text: card.desk.isMapPlaying ? "Pause" : "Play"
            spokenName: text + " the pixel map"
            isSwitch: true
            isLit: card.desk.isMapPlaying
            onClicked: card.desk.playMap(!card.desk.isMapPlaying)
        }
        DeskSlider {
            objectName: "frame"
            anchors.left: play.right
            anchors.leftMargin: 12
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            enabled: card.hasMap
            label: "Frame"
            level: card.desk.frame
            least: 1
            greatest: card.desk.frames
            onMoved: level => card.desk.showFrame(level)
        }
    }
}
