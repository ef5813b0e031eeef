// SPDX-License-Identifier: Apache-2.0
// Shows where the keyboard is. White within black, so that it is seen on any ground.
import QtQuick
import Halvora.impl

Rectangle {
    id: ring

    property real around: 8
    property seatColours colours

    anchors.fill: parent
    anchors.margins: -3
    color: "transparent"
    radius: around + 3
    border.width: 2
    border.color: ring.colours.ring

    Rectangle {
        objectName: "focusRingInside"
        anchors.fill: parent
        anchors.margins: 2
        color: "transparent"
        radius: ring.around + 1
        border.width: 1
        border.color: ring.colours.ringInside
    }
}
