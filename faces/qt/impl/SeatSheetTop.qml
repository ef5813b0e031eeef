// SPDX-License-Identifier: Apache-2.0
// What stays at the sheet's head, however far the rest is scrolled: the way out, and how far the
// user has come.
import QtQuick
import Halvora.impl

Item {
    id: top

    required property SeatWizard wizard

    implicitHeight: Math.max(close.height, count.height)

    StatusButton {
        id: close

        objectName: "closeButton"
        look: top.wizard.closeButton
        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        leftPadding: mirrored ? 16 : 0
        rightPadding: mirrored ? 0 : 16
        room: top.width / 2 - 16
        width: Math.min(Math.max(implicitWidth, StatusMetrics.target), top.width / 2)
        height: Math.max(implicitHeight, StatusMetrics.target)
        onClicked: top.wizard.close()
    }
    StatusText {
        id: count

        objectName: "stepCount"
        look: top.wizard.stepLabel
        anchors.left: close.right
        anchors.leftMargin: 8
        anchors.right: parent.right
        anchors.verticalCenter: close.verticalCenter
        text: top.wizard.stepText
        horizontalAlignment: Text.AlignRight
    }
}
