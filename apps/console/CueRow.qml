// SPDX-License-Identifier: Apache-2.0
// One cue of a show: its number and name, when it comes, and its look. A press chooses it and plays
// nothing.
import QtQuick
import QtQuick.Templates as T
import HalvoraDemo

T.AbstractButton {
    id: row

    required property int index
    required property string name
    required property string time
    required property string look
    required property color colour
    required property CueDesk cues
    readonly property bool isCurrent: cues.hasAir && index === cues.current
    readonly property bool isNext: index === cues.next
    readonly property bool isChosen: index === cues.chosen
    readonly property color ink: isCurrent ? DeskStyle.inkOverAccent : DeskStyle.text

    height: 30
    focusPolicy: Qt.NoFocus
    onClicked: cues.chosen = index
    Accessible.role: Accessible.ListItem
    Accessible.name: "Cue " + (index + 1) + ", " + name + ", "
                     + (time === "GO" ? "by GO" : "at " + time) + ", " + look
                     + (isCurrent ? ", on the air" : isNext ? ", next" : "")
    Accessible.selected: isChosen
    Accessible.onPressAction: row.clicked()

    background: Rectangle {
        objectName: "cueRowGround"
        radius: 4
        color: row.isCurrent ? DeskStyle.accent
               : row.isChosen ? DeskStyle.hovered : "transparent"
        border.width: row.isChosen || row.isNext ? 1 : 0
        border.color: row.isNext ? DeskStyle.accent : DeskStyle.quiet
    }
    contentItem: Item {
        objectName: "cueRowParts"

        DeskText {
            objectName: "cueNumber"
            x: 8
            width: 36
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            font.pixelSize: 12
            color: row.ink
            text: row.index + 1
            Accessible.ignored: true
        }
        DeskText {
            objectName: "cueName"
            x: 46
            width: parent.width - x - 226
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
            font.pixelSize: 12
            font.weight: row.isCurrent ? Font.DemiBold : Font.Normal
            color: row.ink
            text: row.name
            Accessible.ignored: true
        }
        DeskText {
            objectName: "cueNext"
            visible: row.isNext
            anchors.right: parent.right
            anchors.rightMargin: 190
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            font.pixelSize: DeskStyle.smallSize
            color: row.isCurrent ? row.ink : DeskStyle.accent
            text: "next"
            Accessible.ignored: true
        }
        DeskText {
            objectName: "cueTime"
            anchors.right: parent.right
            anchors.rightMargin: 124
            width: 62
            height: parent.height
            horizontalAlignment: Text.AlignRight
            verticalAlignment: Text.AlignVCenter
            font.pixelSize: 12
            color: row.ink
            text: row.time
            Accessible.ignored: true
        }
        Rectangle {
            objectName: "cueColour"
            anchors.right: parent.right
            anchors.rightMargin: 98
            anchors.verticalCenter: parent.verticalCenter
            width: 14
            height: 14
            radius: 7
            color: row.colour
            border.color: DeskStyle.quiet
        }
        DeskText {
            objectName: "cueLook"
            anchors.right: parent.right
            anchors.rightMargin: 8
            width: 84
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
            font.pixelSize: 12
            color: row.ink
            text: row.look
            Accessible.ignored: true
        }
    }
}
