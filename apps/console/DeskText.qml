// SPDX-License-Identifier: Apache-2.0
import QtQuick
import HalvoraDemo

Text {
    color: DeskStyle.text
    font.pixelSize: DeskStyle.textSize
    textFormat: Text.PlainText
    elide: Text.ElideRight
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: text === ""
}
