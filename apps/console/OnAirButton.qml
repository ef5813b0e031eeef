// SPDX-License-Identifier: Apache-2.0
// On the air with a press, off it with one that is held, so that nobody leaves by mistake. A screen
// reader's press is meant, and enough.
import QtQuick
import HalvoraDemo

DeskButton {
    id: button

    required property ShowConsole desk

    text: !desk.isOnAir ? "Off air" : desk.isLeaving ? "Keep holding" : "On air · hold"
    spokenName: desk.isOnAir ? "On air" : "Off air"
    isSwitch: true
    isLit: desk.isOnAir
    onPressedChanged: pressed ? desk.pressAir() : desk.releaseAir()
    onActiveFocusChanged: desk.releaseAir()
    Accessible.onPressAction: desk.isOnAir = !desk.isOnAir
    Keys.onPressed: event => {
        if (!event.isAutoRepeat && [Qt.Key_Return, Qt.Key_Enter].includes(event.key))
            button.desk.pressAir();
    }
    Keys.onReleased: event => {
        if (!event.isAutoRepeat && [Qt.Key_Return, Qt.Key_Enter].includes(event.key))
            button.desk.releaseAir();
    }
}
