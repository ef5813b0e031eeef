// SPDX-License-Identifier: Apache-2.0
// A ring of dots of which one after the other is bright. It shows a moment of its turn and does not
// move by itself.
import QtQuick
import Halvora

Item {
    property real turn: 0
    property color colour: "white"

    Accessible.role: Accessible.Animation

    Repeater {
        model: 8

        Rectangle {
            required property int index
            readonly property StatusSpinner ring: parent as StatusSpinner
            readonly property real behind: (ring.turn - index / 8 + 1) % 1

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
