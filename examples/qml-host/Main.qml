// SPDX-License-Identifier: Apache-2.0
// The whole of a host's interface: the light over the window, the status panel above it.
import QtQuick
import QtQuick.Window
import Halvora

Window {
    width: 390
    height: 844
    color: "black"
    visible: true

    HalvoraView {
        anchors.fill: parent
        allowedTransmitterIds: []
        onLightShowStarted: console.info("the show begins")
        Component.onCompleted: start()
    }
    HalvoraStatusView {
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom; margins: 16 }
        defaultVenueId: 7
    }
}
