// SPDX-License-Identifier: Apache-2.0
// One row of the picker, and below its title a standing area's own name. The further from the
// middle, the paler.
import QtQuick
import QtQuick.Templates as T
import Halvora.impl

Column {
    id: row

    required property string title
    required property string detail
    required property int index
    property SeatWizard wizard
    readonly property T.Tumbler wheel: T.Tumbler.tumbler
    readonly property real away: Math.abs(T.Tumbler.displacement)
    readonly property color ink: wheel ? wheel.palette.text : "white"
    readonly property font letters: wheel ? wheel.font : Qt.font({})

    signal chosen()

    objectName: "pickerRow"
    width: wheel ? wheel.availableWidth : 0
    height: wheel ? wheel.availableHeight / wheel.visibleItemCount : 0
    // Never paler than can be read.
    opacity: wizard && wizard.colours.high ? 1
                                           : Math.max(0.5, 1 - 0.35 * Math.min(away, 1) - 0.12 * away)
    Accessible.role: Accessible.ListItem
    Accessible.name: wizard ? wizard.spokenRowAt(index) : title
    Accessible.selectable: true
    Accessible.selected: wizard !== null && index === wizard.pickerIndex
    Accessible.onPressAction: chosen()

    Text {
        objectName: "pickerRowTitle"
        width: row.width
        height: row.detail === "" ? row.height : Math.round(row.height * 0.62)
        text: row.title
        textFormat: Text.PlainText
        color: row.ink
        font: row.letters
        fontSizeMode: Text.Fit
        minimumPixelSize: 12
        elide: Text.ElideRight
        leftPadding: 12
        rightPadding: 12
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
    Text {
        objectName: "pickerRowDetail"
        visible: row.detail !== ""
        width: row.width
        height: row.height - Math.round(row.height * 0.62)
        text: row.detail
        textFormat: Text.PlainText
        color: row.ink
        font.family: row.letters.family
        font.pixelSize: Math.max(Math.round(row.letters.pixelSize * 0.45), 12)
        fontSizeMode: Text.HorizontalFit
        minimumPixelSize: 10
        elide: Text.ElideRight
        leftPadding: 12
        rightPadding: 12
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignTop
        Accessible.ignored: true
    }
}
