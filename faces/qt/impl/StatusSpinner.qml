// SPDX-License-Identifier: Apache-2.0
// A ring of dots, each paler than the one before it, that turns once a second.
import QtQuick
import Halvora.impl

Item {
    id: spinner

    property bool turns: false
    property color colour: "white"

    Accessible.role: Accessible.Animation

    RotationAnimation {
        objectName: "spinnerTurn"
        target: spinner
        property: "rotation"
        from: 0
        to: 360
        duration: 1000
        loops: Animation.Infinite
        running: spinner.turns
        onStopped: spinner.rotation = 0
    }

    Repeater {
        model: 8

        Rectangle {
            required property int index
            readonly property StatusSpinner ring: parent as StatusSpinner
            readonly property real behind: (1 - index / 8) % 1

            objectName: "spinnerDot"
            width: ring.width / 7
            height: width
            radius: width / 2
            color: ring.colour
            opacity: 1 - 0.85 * behind
            x: ring.width / 2 * (1 + 0.8 * Math.sin(2 * Math.PI * index / 8)) - width / 2
            y: ring.height / 2 * (1 - 0.8 * Math.cos(2 * Math.PI * index / 8)) - height / 2
        }
    }
}
