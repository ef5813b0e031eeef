// SPDX-License-Identifier: Apache-2.0
// One button of the console; what is chosen or live is lit. It shows its text, or instead of it a
// strip of colours.
import QtQuick
import QtQuick.Templates as T
import HalvoraDemo

T.Button {
    id: button

    property bool isLit: false
    // It is on or off, and lit when it is on.
    property bool isSwitch: false
    property string spokenName: text
    property var colours: []

    implicitWidth: implicitContentWidth + 24
    implicitHeight: DeskStyle.control
    focusPolicy: Qt.StrongFocus
    opacity: enabled ? 1 : 0.4
    Accessible.role: Accessible.Button
    Accessible.name: spokenName
    Accessible.checkable: isSwitch
    Accessible.checked: isSwitch && isLit
    Accessible.onPressAction: {
        if (button.enabled)
            button.clicked();
    }
    // A key that is held acts once, and not on whatever it has brought.
    Keys.onPressed: event => {
        const isReturn = event.key === Qt.Key_Return || event.key === Qt.Key_Enter;
        event.accepted = isReturn || (event.isAutoRepeat && event.key === Qt.Key_Space);
        if (isReturn && !event.isAutoRepeat)
            button.clicked();
    }
    Keys.onReleased: event => event.accepted = event.isAutoRepeat && event.key === Qt.Key_Space

    contentItem: DeskText {
        objectName: "buttonText"
        visible: button.colours.length === 0
        text: button.text
        color: button.isLit ? DeskStyle.inkOverAccent : DeskStyle.text
        font.pixelSize: 12
        font.weight: button.isLit ? Font.DemiBold : Font.Normal
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        leftPadding: 4
        rightPadding: 4
        Accessible.ignored: true
    }
    background: Rectangle {
        objectName: "buttonGround"
        radius: DeskStyle.radius
        color: button.isLit ? DeskStyle.accent
               : button.down ? DeskStyle.line
               : button.hovered ? DeskStyle.hovered : DeskStyle.raised

        ColourStrip {
            objectName: "buttonColours"
            anchors.fill: parent
            anchors.margins: button.isLit ? 4 : 3
            colours: button.colours
        }
        Rectangle {
            objectName: "buttonFocus"
            visible: button.visualFocus
            anchors.fill: parent
            anchors.margins: -3
            color: "transparent"
            radius: parent.radius + 3
            border.width: 2
            border.color: DeskStyle.text
        }
    }
}
