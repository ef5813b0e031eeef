// SPDX-License-Identifier: Apache-2.0
// The whole of a host's interface: the light over the window, the status panel above it, and over
// both what the audience is asked.
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
    // Warns of flashing light before anybody joins, and lets everybody leave in mid-show.
    HalvoraAudienceView {
        anchors.fill: parent
    }
}
