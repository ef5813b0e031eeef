// SPDX-License-Identifier: Apache-2.0
// How often the look flashes that is set or that a show plays, and what arms it where that is too
// often to be sent by mistake.
import QtQuick
import HalvoraDemo

Item {
    id: row

    required property ShowConsole desk
    readonly property DeskFlashes flashes: desk.flashes

    implicitHeight: DeskStyle.control

    DeskText {
        id: words

        objectName: "flashes"
        anchors.left: parent.left
        anchors.right: arm.left
        anchors.rightMargin: DeskStyle.gap
        anchors.verticalCenter: parent.verticalCenter
        color: row.flashes.isHigh ? DeskStyle.text : DeskStyle.quiet
        font.weight: row.flashes.isHigh ? Font.DemiBold : Font.Normal
        text: Math.max(row.flashes.general, row.flashes.red) + " flashes a second"
              + (row.flashes.isWaiting ? ": not sent until armed" : "")
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    DeskButton {
        id: arm

        objectName: "arm"
        anchors.right: parent.right
        width: 96
        text: row.flashes.isArmed ? "Armed" : "Arm"
        spokenName: "Arm looks that flash more than three times a second"
        isSwitch: true
        isLit: row.flashes.isArmed
        visible: row.flashes.isHigh || row.flashes.isArmed
        onClicked: row.flashes.isArmed = !row.flashes.isArmed
    }
}
