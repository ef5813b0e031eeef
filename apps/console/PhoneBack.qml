// SPDX-License-Identifier: Apache-2.0
// The same phone from behind, for its torch.
import QtQuick
import HalvoraDemo

Item {
    id: back

    required property bool isTorchOn
    readonly property point lampMiddle: Qt.point(33, 30)

    implicitWidth: 72
    implicitHeight: 148
    Accessible.role: Accessible.Indicator
    Accessible.name: isTorchOn ? "Torch on" : "Torch off"

    Rectangle {
        objectName: "backBody"
        anchors.fill: parent
        radius: 12
        color: "#20242d"
        border.width: 2
        border.color: "#3a3f4b"
    }
    Rectangle {
        objectName: "cameras"
        x: 8
        y: 8
        width: 32
        height: 44
        radius: 9
        color: "#171a20"
        border.color: "#333945"

        Repeater {
            model: 2

            Rectangle {
                required property int index

                objectName: "lens"
                x: 4
                y: 5 + index * 19
                width: 15
                height: 15
                radius: 7.5
                color: "#0b0d11"
                border.width: 2
                border.color: "#3a3f4b"
            }
        }
    }
    // The glow as rings, because not every renderer can blur.
    Repeater {
        model: [92, 70, 50, 34, 22]

        Rectangle {
            required property int modelData
            readonly property PhoneBack phone: parent as PhoneBack

            objectName: "glow"
            visible: phone.isTorchOn
            x: phone.lampMiddle.x - width / 2
            y: phone.lampMiddle.y - height / 2
            width: modelData
            height: modelData
            radius: modelData / 2
            color: "#fff3d6"
            opacity: 0.11
        }
    }
    Rectangle {
        objectName: "torchLamp"
        x: back.lampMiddle.x - 4
        y: back.lampMiddle.y - 4
        width: 8
        height: 8
        radius: 4
        color: back.isTorchOn ? "white" : "#5a5f6b"
    }
}
