// SPDX-License-Identifier: Apache-2.0
// Shows where the keyboard is. White within black, so that it is seen on any ground.
import QtQuick

Rectangle {
    property real around: 8

    anchors.fill: parent
    anchors.margins: -3
    color: "transparent"
    radius: around + 3
    border.width: 2
    border.color: "white"

    Rectangle {
        objectName: "focusRingInside"
        anchors.fill: parent
        anchors.margins: 2
        color: "transparent"
        radius: parent.around + 1
        border.width: 1
        border.color: "black"
    }
}
