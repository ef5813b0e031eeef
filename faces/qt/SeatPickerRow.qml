// SPDX-License-Identifier: Apache-2.0
// One row of the picker. The further from the middle, the paler.
import QtQuick
import QtQuick.Templates as T

Text {
    id: row

    required property string title
    required property int index
    readonly property T.Tumbler wheel: T.Tumbler.tumbler
    readonly property real away: Math.abs(T.Tumbler.displacement)

    objectName: "pickerRow"
    width: wheel ? wheel.availableWidth : 0
    height: wheel ? wheel.availableHeight / wheel.visibleItemCount : 0
    text: title
    textFormat: Text.PlainText
    color: wheel ? wheel.palette.text : "white"
    font: wheel ? wheel.font : Qt.font({})
    fontSizeMode: Text.HorizontalFit
    minimumPixelSize: Math.round(font.pixelSize / 2)
    elide: Text.ElideRight
    leftPadding: 12
    rightPadding: 12
    horizontalAlignment: Text.AlignHCenter
    verticalAlignment: Text.AlignVCenter
    opacity: Math.max(0.12, 1 - 0.35 * Math.min(away, 1) - 0.12 * away)
    Accessible.ignored: true
}
