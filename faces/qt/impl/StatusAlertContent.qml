// SPDX-License-Identifier: Apache-2.0
// The words of an alert and its button.
import QtQuick
import Halvora.impl

FocusScope {
    id: content

    property alertLook look
    property bool isMirrored: false

    readonly property bool isAtKeys: button.visualFocus

    signal dismissed()

    // A key that is held, and may have brought the alert, does not take it away.
    function act(isHeld: bool): void {
        if (!isHeld)
            content.dismissed();
    }

    objectName: "alertContent"
    focus: true
    implicitHeight: words.height + 2 * 20 + button.implicitHeight + 1
    LayoutMirroring.enabled: content.isMirrored
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.AlertMessage
    Accessible.name: content.look.title.text
    Accessible.description: content.look.message.text
    Keys.onEscapePressed: event => act(event.isAutoRepeat)
    Keys.onBackPressed: event => act(event.isAutoRepeat)

    Flickable {
        objectName: "alertScroller"
        anchors.top: parent.top
        anchors.bottom: line.top
        width: parent.width
        contentHeight: words.height + 2 * 20
        interactive: contentHeight > height
        clip: interactive

        Column {
            id: words

            objectName: "alertWords"
            x: 20
            y: 20
            width: parent.width - 40
            spacing: 8

            StatusText {
                objectName: "alertTitle"
                look: content.look.title
                width: words.width
            }
            StatusText {
                objectName: "alertMessage"
                look: content.look.message
                width: words.width
                opacity: 0.85
            }
        }
    }
    Rectangle {
        id: line

        objectName: "alertLine"
        anchors.bottom: button.top
        width: parent.width
        height: content.look.colours.lineWidth
        color: content.look.colours.hairline
    }
    StatusButton {
        id: button

        objectName: "alertButton"
        look: content.look.button
        anchors.bottom: parent.bottom
        width: parent.width
        height: implicitHeight
        focus: true
        onClicked: content.dismissed()
    }
}
