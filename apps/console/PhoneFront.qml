// SPDX-License-Identifier: Apache-2.0
// The phone as its user holds it. What lies on its screen is a host's whole interface: the page of
// the application with the status panel, and over it the light, which covers it during a show.
import QtQuick
import QtQuick.Window
import Halvora
import HalvoraDemo

Item {
    id: phone

    required property bool isBare
    // Whether whoever holds it is asked before a show, and may leave it. An operator's own phone is
    // a part of the desk.
    property bool hasAudience: false
    property alias offersSettingsWhenOff: status.offersSettingsWhenOff
    readonly property alias panel: status.panel
    // The corners of the screen lie under the frame as long as the frame's inner radius is not more
    // than 2.4 times its width.
    readonly property int frameWidth: 12
    readonly property int frameRadius: 40

    Rectangle {
        objectName: "hostPage"
        anchors.fill: parent
        color: "#12141a"
        // What the light covers is not to be reached.
        enabled: !light.isLit

        DeskText {
            id: greeting

            objectName: "hostGreeting"
            anchors.horizontalCenter: parent.horizontalCenter
            y: parent.height * 0.2
            font.pixelSize: 28
            font.weight: Font.Light
            text: "The Arena"
        }
        DeskText {
            objectName: "hostHint"
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.top: greeting.bottom
            anchors.topMargin: DeskStyle.gap
            color: DeskStyle.quiet
            font.pixelSize: 15
            text: "Hold up your phone when the lights go down"
        }
        // At the foot of the page, and scrolled where texts are larger than it is.
        Flickable {
            id: page

            readonly property Item atKeys: Window.activeFocusItem

            objectName: "hostScroller"
            anchors.fill: parent
            anchors.margins: 32
            contentHeight: Math.max(height, status.height)
            interactive: contentHeight > height
            boundsBehavior: Flickable.StopAtBounds
            onAtKeysChanged: {
                for (let item = atKeys; item; item = item.parent) {
                    if (item !== status)
                        continue;
                    const top = atKeys.mapToItem(contentItem, 0, 0).y - 3;
                    const least = top + atKeys.height + 6 - height;
                    contentY = Math.max(0, Math.min(Math.max(contentY, least), top));
                }
            }

            HalvoraStatusView {
                id: status

                width: parent.width
                y: parent.height - height
                defaultVenueId: 7
                explainsStates: true
                asksOnAnotherDay: true
                statusTextColour: DeskStyle.text
                actionButtonColour: DeskStyle.accent
                actionButtonTitleColour: DeskStyle.inkOverAccent
            }
        }
    }
    HalvoraView {
        id: light

        property bool hasStarted: false
        // A show that is dropped because the venue was left says no word.
        readonly property bool isLit: hasStarted && isInsideVenue

        objectName: "light"
        anchors.fill: parent
        onLightShowStarted: hasStarted = true
        onLightShowStopped: hasStarted = false
        Component.onCompleted: start()
    }
    Loader {
        objectName: "audience"
        anchors.fill: parent
        active: phone.hasAudience
        sourceComponent: HalvoraAudienceView {}
    }
    Rectangle {
        objectName: "phoneFrame"
        visible: !phone.isBare
        anchors.fill: parent
        anchors.margins: -phone.frameWidth
        color: "transparent"
        border.color: "#3a3f4b"
        border.width: phone.frameWidth
        radius: phone.frameRadius
    }
}
