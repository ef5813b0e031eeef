// SPDX-License-Identifier: Apache-2.0
// One label of the seat screens.
import QtQuick
import Halvora.impl

Text {
    property labelLook look

    visible: look.shown
    opacity: look.alpha
    text: look.text
    textFormat: Text.PlainText
    color: look.colour
    font: look.fontWithin(text, width)
    horizontalAlignment: look.alignment
    wrapMode: look.lines === 1 ? Text.NoWrap : Text.Wrap
    maximumLineCount: look.lines > 0 ? look.lines : 10000
    elide: look.lines > 0 ? Text.ElideRight : Text.ElideNone
    lineHeightMode: look.lineHeight > 0 ? Text.FixedHeight : Text.ProportionalHeight
    lineHeight: look.lineHeight > 0 ? look.lineHeight : 1
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: opacity === 0 || text === ""
}
