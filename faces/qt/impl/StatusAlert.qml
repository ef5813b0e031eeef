// SPDX-License-Identifier: Apache-2.0
// A short message over everything else, with the one button that takes it away.
import QtQuick
import QtQuick.Templates as T
import Halvora.impl

T.Popup {
    id: root

    property alertLook look
    property bool isMirrored: false
    property bool reducedMotion: false

    // Whether the keyboard was in use when the alert went.
    property bool wasAtKeys: false

    signal dismissed()

    onAboutToHide: wasAtKeys = (contentItem as StatusAlertContent).isAtKeys
    parent: T.Overlay.overlay
    visible: look.shown
    modal: true
    focus: true
    closePolicy: T.Popup.NoAutoClose
    width: parent ? Math.min(parent.width - 48, 320) : 320
    height: Math.min(implicitContentHeight, parent ? parent.height - 32 : 320)
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? Math.round((parent.height - height) / 2) : 0

    T.Overlay.modal: Rectangle {
        objectName: "alertShade"
        // A component of its own for the linter, who sees no ids from outside it.
        // qmllint disable unqualified
        color: root.look.colours.shade
        // qmllint enable unqualified
    }
    enter: Transition {
        NumberAnimation {
            property: "opacity"
            from: 0
            to: 1
            duration: root.reducedMotion ? 0 : 160
        }
    }
    exit: Transition {
        NumberAnimation {
            property: "opacity"
            to: 0
            duration: root.reducedMotion ? 0 : 120
        }
    }
    background: Rectangle {
        objectName: "alertBackground"
        color: root.look.colours.alert
        radius: 14
        border.width: root.look.colours.lineWidth
        border.color: root.look.colours.hairline
    }
    contentItem: StatusAlertContent {
        look: root.look
        isMirrored: root.isMirrored
        onDismissed: root.dismissed()
    }
}
