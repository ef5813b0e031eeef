// SPDX-License-Identifier: Apache-2.0
// The audience's own say, which a host places over its light: the warning of flashing light before
// anybody joins, gentle light for good, and in mid-show a way out by Back, Esc or three quick taps,
// and back in. While nothing is asked it draws nothing and lets everything through.
import QtQuick
import Halvora.impl

Item {
    id: root

    // Otherwise they are in from the start, and may still leave.
    property alias asksBeforeJoining: panel.asksBeforeJoining
    // The system's user wants less flashing. It can only tighten what the host allows.
    property alias reducesFlashing: panel.reducesFlashing
    // Of the words that lie over the light, and of the button that joins; either spelling.
    property alias textColour: panel.textColour
    property alias textColor: panel.textColour
    property alias actionButtonColour: panel.actionButtonColour
    property alias actionButtonColor: panel.actionButtonColour
    property alias actionButtonTitleColour: panel.actionButtonTitleColour
    property alias actionButtonTitleColor: panel.actionButtonTitleColour
    // All texts are so many times their size, at first as large as the system asks for.
    property alias textScale: panel.textScale
    // One ink on one ground takes the place of those colours, at first as the system says that the
    // user wants it. Nothing here moves by itself.
    property alias highContrast: panel.highContrast

    // Limited flashing, at most 60 % of the brightness, neither torch nor vibration, kept for all
    // later shows: also for a host's own page of settings.
    property alias gentleLight: panel.gentleLight
    // The question stands over everything.
    readonly property alias asks: panel.asks
    // They have joined and a show goes on: Back and Esc mean the show and nothing else.
    readonly property alias isInShow: panel.isInShow
    // Below a fifth, and not being charged: said where the question is.
    readonly property alias batteryIsLow: panel.batteryIsLow
    // They stay out: nothing is asked of them, and `join` brings them back.
    readonly property bool isOut: panel.stage === AudiencePanel.Out

    // In, or back in: the light is what the show has come to by now.
    function join(): void {
        panel.join();
    }
    // Out in mid-show, and asked whether to resume: the light fades within 300 ms.
    function leave(): void {
        panel.leave();
    }
    // Out, without a question.
    function stayOut(): void {
        panel.stayOut();
    }

    objectName: "halvoraAudienceView"
    LayoutMirroring.enabled: panel.isRightToLeft
    LayoutMirroring.childrenInherit: true

    AudiencePanel {
        id: panel

        objectName: "audiencePanel"
        highContrast: wantsHighContrast
    }
    AudienceKeys {
        window: root.Window.window
        active: panel.isInShow
        onPressed: panel.leave()
    }
    TapHandler {
        objectName: "audienceTaps"
        enabled: panel.isInShow
        onTapped: {
            if (tapCount === 3)
                panel.leave();
        }
    }

    // For who can neither tap nor type: as large as the light, and not to be seen.
    Item {
        id: leaving

        objectName: "audienceLeave"
        anchors.fill: parent
        anchors.margins: 8
        visible: panel.isInShow
        activeFocusOnTab: true
        Accessible.role: Accessible.Button
        Accessible.name: panel.leaveButton.title
        Accessible.focusable: true
        Accessible.onPressAction: panel.leave()
        Keys.onReturnPressed: event => {
            if (!event.isAutoRepeat)
                panel.leave();
        }

        StatusFocusRing {
            objectName: "leaveFocusRing"
            visible: leaving.activeFocus
        }
    }
    StatusButton {
        objectName: "audienceComeBack"
        anchors.top: parent.top
        anchors.right: parent.right
        anchors.margins: 16
        look: panel.comeBackButton
        room: Math.max(1, root.width - 2 * 32)
        width: Math.min(implicitWidth, root.width - 2 * 16)
        onClicked: panel.join()
    }
    AudienceQuestion {
        id: question

        // What had the keyboard before it was asked.
        property Item before: null

        objectName: "audienceQuestion"
        anchors.fill: parent
        visible: panel.asks
        panel: panel
        onVisibleChanged: {
            if (visible) {
                before = root.Window.activeFocusItem;
                takeFocus();
            } else {
                const had = before && before.visible && before.enabled;
                (had ? before : root.parent).forceActiveFocus();
            }
        }
        Component.onCompleted: {
            if (visible)
                takeFocus();
        }
    }
    SheetCurtain {
        objectName: "audienceCurtain"
        before: root.parent
        except: root
        drawn: panel.asks
    }

    QtObject {
        id: heard

        readonly property string asked: panel.asks ? panel.title.text : ""
        readonly property string battery: panel.batteryLabel.shown ? panel.batteryLabel.text : ""

        objectName: "audienceHeard"
        onAskedChanged: announcer.say(asked)
        onBatteryChanged: announcer.say(battery)
    }
    StatusAnnouncer {
        id: announcer

        objectName: "audienceAnnouncer"
        Accessible.role: Accessible.Notification
        Accessible.name: said
    }
}
