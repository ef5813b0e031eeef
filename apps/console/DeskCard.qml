// SPDX-License-Identifier: Apache-2.0
// A group of controls under a title; a note at its right says what is chosen.
import QtQuick
import HalvoraDemo

Rectangle {
    id: card

    property string title
    property string note
    default property alias content: body.data

    objectName: "card"
    color: DeskStyle.card
    radius: 10
    border.color: DeskStyle.line
    implicitHeight: body.y + body.implicitHeight + DeskStyle.inset
    Accessible.role: Accessible.Grouping
    Accessible.name: title

    DeskText {
        id: heading

        objectName: "cardTitle"
        x: DeskStyle.inset
        y: 12
        text: card.title
        font.weight: Font.DemiBold
        Accessible.ignored: true
    }
    DeskText {
        objectName: "cardNote"
        anchors.left: heading.right
        anchors.right: parent.right
        anchors.leftMargin: DeskStyle.gap
        anchors.rightMargin: DeskStyle.inset
        anchors.baseline: heading.baseline
        horizontalAlignment: Text.AlignRight
        color: DeskStyle.quiet
        font.pixelSize: DeskStyle.smallSize
        text: card.note
    }
    Column {
        id: body

        objectName: "cardBody"
        x: DeskStyle.inset
        y: 40
        width: card.width - 2 * DeskStyle.inset
        spacing: 12
    }
}
