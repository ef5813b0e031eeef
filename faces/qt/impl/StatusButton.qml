// SPDX-License-Identifier: Apache-2.0
// One button of the seat screens. Its title wraps rather than being cut, and the button grows.
import QtQuick
import QtQuick.Templates as T
import Halvora.impl

T.Button {
    id: button

    property buttonLook look
    // For the title, where the button's width follows from it; 0 for the button's own.
    property real room: 0

    visible: look.shown
    enabled: look.enabled
    opacity: look.alpha
    text: look.title
    font: look.font
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Math.max(look.height, implicitContentHeight + topPadding + bottomPadding)
    horizontalPadding: 16
    verticalPadding: 8
    focusPolicy: Qt.StrongFocus
    Accessible.role: Accessible.Button
    Accessible.name: text
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

    contentItem: Text {
        objectName: "buttonTitle"
        text: button.text
        textFormat: Text.PlainText
        font: button.look.fontWithin(button.room > 0 ? button.room : button.width - button.leftPadding
                                                                    - button.rightPadding)
        color: button.look.titleColour
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        wrapMode: Text.Wrap
        Accessible.ignored: true
    }
    background: Rectangle {
        objectName: "buttonBackground"
        color: button.look.background
        radius: button.look.cornerRadius
        border.width: color.a > 0 ? button.look.colours.outlineWidth : 0
        border.color: button.look.colours.hairline

        Rectangle {
            objectName: "buttonVeil"
            anchors.fill: parent
            radius: parent.radius
            color: button.down ? "black" : "white"
            opacity: button.down ? 0.25 : 0.08
            visible: button.down || (button.hovered && button.enabled)
        }
        StatusFocusRing {
            objectName: "buttonFocusRing"
            around: parent.radius
            colours: button.look.colours
            visible: button.visualFocus
        }
    }
}
