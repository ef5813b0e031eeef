// SPDX-License-Identifier: Apache-2.0
// What the audience is asked, before it joins and after it has left: over the whole of its place,
// and nothing behind it is to be reached. Where it is higher than that, it scrolls.
import QtQuick
import Halvora.impl

FocusScope {
    id: root

    required property AudiencePanel panel

    // Where the keyboard is, if the user is at the keyboard.
    readonly property Item atKeys: gentle.visualFocus ? gentle : join.visualFocus ? join
                                 : stayOut.visualFocus ? stayOut : null

    function reveal(control: Item): void {
        if (!control)
            return;
        const top = words.y + control.y - 16;
        const least = top + control.height + 2 * 16 - scroller.height;
        scroller.contentY = Math.max(0, Math.min(Math.max(scroller.contentY, least), top));
    }

    onAtKeysChanged: reveal(atKeys)

    function takeFocus(): void {
        gentle.forceActiveFocus(Qt.PopupFocusReason);
    }

    Accessible.role: Accessible.Dialog
    Accessible.name: panel.title.text
    Accessible.description: panel.message.text
    // A key that is held may have brought the question, and does not answer it.
    Keys.onEscapePressed: event => {
        if (!event.isAutoRepeat)
            root.panel.stayOut();
    }
    Keys.onBackPressed: event => {
        if (!event.isAutoRepeat)
            root.panel.stayOut();
    }

    Rectangle {
        objectName: "audienceGround"
        anchors.fill: parent
        color: root.panel.title.colours.high ? root.panel.title.colours.ground : "black"
    }
    MouseArea {
        objectName: "audienceShield"
        anchors.fill: parent
        hoverEnabled: true
        preventStealing: true
        onWheel: wheel => wheel.accepted = true
    }
    Flickable {
        id: scroller

        objectName: "audienceScroller"
        anchors.fill: parent
        contentHeight: Math.max(height, words.height + 2 * 24)
        interactive: contentHeight > height
        clip: interactive
        boundsBehavior: Flickable.StopAtBounds

        Column {
            id: words

            objectName: "audienceWords"
            anchors.horizontalCenter: parent.horizontalCenter
            y: Math.max(24, Math.round((scroller.height - height) / 2))
            width: Math.min(scroller.width - 2 * 24, 440)
            spacing: 16

            StatusText {
                objectName: "audienceTitle"
                look: root.panel.title
                width: words.width
                Accessible.role: Accessible.Heading
            }
            StatusText {
                objectName: "audienceMessage"
                look: root.panel.message
                width: words.width
            }
            StatusText {
                objectName: "audienceBattery"
                look: root.panel.batteryLabel
                width: words.width
            }
            AudienceSwitch {
                id: gentle

                objectName: "gentleSwitch"
                label: root.panel.gentleLabel
                note: root.panel.gentleNote
                isOn: root.panel.gentleLight
                width: words.width
                KeyNavigation.tab: join
                KeyNavigation.backtab: stayOut
                onSwitched: root.panel.gentleLight = !root.panel.gentleLight
            }
            StatusButton {
                id: join

                objectName: "audienceJoin"
                look: root.panel.joinButton
                width: words.width
                KeyNavigation.tab: stayOut
                KeyNavigation.backtab: gentle
                onClicked: root.panel.join()
            }
            StatusButton {
                id: stayOut

                objectName: "audienceStayOut"
                look: root.panel.stayOutButton
                width: words.width
                KeyNavigation.tab: gentle
                KeyNavigation.backtab: join
                onClicked: root.panel.stayOut()
            }
        }
    }
}
