// SPDX-License-Identifier: Apache-2.0
// A level with its name before it and its value behind it. What it shows is told to it; what the
// user moves it to, it tells.
import QtQuick
import QtQuick.Templates as T
import HalvoraDemo

Item {
    id: root

    required property string label
    required property int level
    property int least: 0
    property int greatest: 255
    property string shown: level
    property color tint: DeskStyle.accent
    property int step: 1

    signal moved(int level)

    implicitHeight: 24
    opacity: enabled ? 1 : 0.4

    DeskText {
        id: name

        objectName: "sliderName"
        width: 64
        height: parent.height
        verticalAlignment: Text.AlignVCenter
        color: DeskStyle.quiet
        font.pixelSize: 12
        text: root.label
        Accessible.ignored: true
    }
    T.Slider {
        id: slider

        // As assistive technology asks for them.
        readonly property real minimumValue: from
        readonly property real maximumValue: to

        objectName: "slider"
        anchors.left: name.right
        anchors.right: number.left
        height: parent.height
        from: root.least
        to: Math.max(root.greatest, root.least + 1)
        stepSize: root.step
        value: root.level
        focusPolicy: Qt.StrongFocus
        // However it is moved: assistive technology sets the value and moves nothing.
        onValueChanged: {
            const isOutside = root.level < from || root.level > to;
            if (!isOutside && Math.round(value) !== root.level)
                root.moved(Math.round(value));
        }
        Accessible.role: Accessible.Slider
        Accessible.name: root.label + ", " + root.shown
        Accessible.onIncreaseAction: increase()
        Accessible.onDecreaseAction: decrease()

        background: Rectangle {
            objectName: "sliderTrack"
            y: (slider.height - height) / 2
            width: slider.width
            height: 4
            radius: 2
            color: DeskStyle.line

            Rectangle {
                objectName: "sliderLevel"
                width: slider.visualPosition * parent.width
                height: parent.height
                radius: 2
                color: root.tint
            }
        }
        handle: Rectangle {
            objectName: "sliderHandle"
            x: slider.visualPosition * (slider.width - width)
            y: (slider.height - height) / 2
            width: 16
            height: 16
            radius: 8
            color: slider.pressed ? root.tint : DeskStyle.text
            border.width: 3
            border.color: DeskStyle.card

            Rectangle {
                objectName: "sliderFocus"
                visible: slider.visualFocus
                anchors.fill: parent
                anchors.margins: -3
                radius: width / 2
                color: "transparent"
                border.width: 2
                border.color: DeskStyle.text
            }
        }
    }
    DeskText {
        id: number

        objectName: "sliderValue"
        anchors.right: parent.right
        width: 56
        height: parent.height
        horizontalAlignment: Text.AlignRight
        verticalAlignment: Text.AlignVCenter
        font.pixelSize: 12
        text: root.shown
        Accessible.ignored: true
    }
}
