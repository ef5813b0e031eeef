// SPDX-License-Identifier: Apache-2.0
// This machine as a phone: a host's whole interface over the whole window, and a line about the
// radio, which full screen leaves out.
import QtQuick
import QtQuick.Window
import HalvoraDemo

Window {
    id: window

    required property SystemHost system
    readonly property bool isFull: visibility === Window.FullScreen

    objectName: "systemWindow"
    title: "Halvora · phone"
    width: 390
    height: 844
    color: "black"
    visible: true

    FocusScope {
        objectName: "room"
        anchors.fill: parent
        focus: true
        Keys.onEscapePressed: event => {
            if (!event.isAutoRepeat)
                window.close();
        }
        Keys.onPressed: event => {
            event.accepted = event.key === Qt.Key_F11;
            if (event.accepted && !event.isAutoRepeat)
                window.visibility = window.isFull ? Window.Windowed : Window.FullScreen;
        }

        PhoneFront {
            objectName: "phone"
            anchors.fill: parent
            isBare: true
            hasAudience: true
            offersSettingsWhenOff: true
        }
        // Readable on any light.
        Rectangle {
            objectName: "radioBand"
            visible: !window.isFull
            width: parent.width
            height: radioText.height + 2 * DeskStyle.gap
            color: DeskStyle.ground

            DeskText {
                id: radioText

                objectName: "radioText"
                x: DeskStyle.inset
                y: DeskStyle.gap
                width: parent.width - 2 * DeskStyle.inset
                color: DeskStyle.quiet
                font.pixelSize: DeskStyle.smallSize
                wrapMode: Text.Wrap
                maximumLineCount: 4
                text: window.system.radio
            }
        }
    }
}
