// SPDX-License-Identifier: Apache-2.0
// A phone on a dark table, in whose screen the show runs; or, in full screen, the show alone.
import QtQuick
import QtQuick.Window
import HalvoraDemo

Window {
    id: window

    required property ScenarioLoop player
    readonly property bool isBare: visibility === Window.FullScreen
    // The corners of the light lie under the frame as long as the frame's inner radius is not more
    // than 2.4 times its width.
    readonly property int frameWidth: 12
    readonly property int frameRadius: 40

    objectName: "demoWindow"
    title: player.title
    width: player.screenWidth + 2 * frameWidth + 48
    height: player.screenHeight + 2 * frameWidth + 104
    color: isBare ? "black" : "#17181c"
    visible: true

    Shortcut {
        // No letter: those are for who dictates, or types for other reasons.
        sequence: "F11"
        autoRepeat: false
        onActivated: window.visibility = window.isBare ? Window.Windowed : Window.FullScreen
    }
    Shortcut {
        sequence: "Esc"
        autoRepeat: false
        onActivated: window.close()
    }

    Column {
        id: heading

        objectName: "heading"
        visible: !window.isBare
        anchors.horizontalCenter: parent.horizontalCenter
        topPadding: 14
        bottomPadding: 10
        spacing: 2

        Text {
            objectName: "titleText"
            anchors.horizontalCenter: parent.horizontalCenter
            color: "#e6e6ea"
            font.pixelSize: 15
            text: window.title
            textFormat: Text.PlainText
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        Text {
            objectName: "statusText"
            anchors.horizontalCenter: parent.horizontalCenter
            color: "#9a9ca6"
            font.pixelSize: 12
            text: window.player.status
            textFormat: Text.PlainText
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }

    Item {
        id: table

        objectName: "table"
        anchors.fill: parent
        anchors.topMargin: window.isBare ? 0 : heading.height
        anchors.bottomMargin: window.isBare ? 0 : hint.height

        Item {
            id: phone

            objectName: "phone"
            anchors.centerIn: parent
            width: window.isBare ? table.width : window.player.screenWidth
            height: window.isBare ? table.height : window.player.screenHeight
            scale: window.isBare ? 1 : Math.min(table.width / (width + 2 * window.frameWidth),
                                                table.height / (height + 2 * window.frameWidth))

            Rectangle {
                objectName: "darkScreen"
                anchors.fill: parent
                color: "black"
            }
            LightSurface {
                objectName: "lightSurface"
                anchors.fill: parent
            }
            Rectangle {
                objectName: "phoneFrame"
                visible: !window.isBare
                anchors.fill: parent
                anchors.margins: -window.frameWidth
                color: "transparent"
                border.color: "#3a3c45"
                border.width: window.frameWidth
                radius: window.frameRadius
            }
        }
    }

    Text {
        id: hint

        objectName: "hintText"
        visible: !window.isBare
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        topPadding: 10
        bottomPadding: 14
        color: "#6c6e78"
        font.pixelSize: 11
        text: "F11 full screen   Esc quit"
        textFormat: Text.PlainText
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
}
