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
    // At the foot, and scrolled where texts are larger than the screen.
    Flickable {
        anchors { fill: parent; margins: 16 }
        contentHeight: Math.max(height, status.height)
        interactive: contentHeight > height

        HalvoraStatusView {
            id: status

            width: parent.width
            y: parent.height - height
            defaultVenueId: 7
            explainsStates: true
            asksOnAnotherDay: true
        }
    }
    // Warns of flashing light before anybody joins, and lets everybody leave in mid-show.
    HalvoraAudienceView {
        anchors.fill: parent
    }
}
