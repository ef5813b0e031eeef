// SPDX-License-Identifier: Apache-2.0
// The status panel that a host places in its interface: the stack of texts and buttons, and over
// the window what the panel presents. The host gives it a width; its height follows.
import QtQuick
import Halvora.impl

Item {
    id: root

    // Of the status sentence, the question for permission and the line about the seat. A font name
    // that is empty, or unknown to the system, means the system's font; sizes are in pixels.
    property alias statusTextColour: panel.statusTextColour
    property alias statusTextColor: panel.statusTextColour
    property alias statusTextFontName: panel.statusTextFontName
    property alias statusTextFontSize: panel.statusTextFontSize
    // As of Text; unless it is set, the side where lines begin.
    property alias statusTextAlignment: panel.statusTextAlignment

    // Of the buttons, in the panel and in the seat selector.
    property alias actionButtonColour: panel.actionButtonColour
    property alias actionButtonColor: panel.actionButtonColour
    property alias actionButtonTitleColour: panel.actionButtonTitleColour
    property alias actionButtonTitleColor: panel.actionButtonTitleColour
    property alias actionButtonTitleFontName: panel.actionButtonTitleFontName
    property alias actionButtonTitleFontSize: panel.actionButtonTitleFontSize
    property alias actionButtonHeight: panel.actionButtonHeight

    // The venue as long as no transmitter has been heard; 0 for none.
    property alias defaultVenueId: panel.defaultVenueId
    // Whether the settings button is there for who has Bluetooth switched off, too: for systems
    // whose settings page can switch it on.
    property alias offersSettingsWhenOff: panel.offersSettingsWhenOff
    // Whether the panel says which of its causes the status sentence has, with a button to try again
    // where that may help.
    property alias explainsStates: panel.explainsStates
    // Whether the panel asks about a seat that was chosen on another day.
    property alias asksOnAnotherDay: panel.asksOnAnotherDay

    // For the user rather than for the host, and at first as the system says that the user wants it:
    // all texts are so many times their size, one ink on one ground takes the place of the host's
    // colours, and nothing slides or turns by itself.
    property alias textScale: panel.textScale
    property alias highContrast: panel.highContrast
    property bool reducedMotion: panel.wantsReducedMotion

    // For the views in here.
    readonly property alias panel: panel

    objectName: "halvoraStatusView"
    implicitWidth: panel.preferredSize.width
    implicitHeight: panel.preferredSize.height
    LayoutMirroring.enabled: panel.isRightToLeft
    LayoutMirroring.childrenInherit: true

    // A ticket's seat, by its names or by a link that carries them: see the panel's own.
    function setSeat(section: string, row: string, seat: string): void {
        panel.setSeat(section, row, seat);
    }
    function openLink(link: string): bool {
        return panel.openLink(link);
    }

    // What is said aloud, once whenever it changes; nothing while it is not to be seen.
    QtObject {
        id: heard

        readonly property SeatWizard wizard: panel.wizard
        readonly property bool isOpen: wizard.isPresented
        readonly property string sentence: panel.statusTextLabel.shown && panel.statusTextLabel.alpha > 0
                                         ? panel.statusTextLabel.text : ""
        readonly property string dot: panel.dotShown ? panel.spokenDot : ""
        readonly property string seat: panel.summaryShown && panel.dotShown ? panel.spokenSummary : ""
        readonly property string step: isOpen ? wizard.stepText : ""
        readonly property string row: isOpen && wizard.pickerShown ? wizard.spokenRow : ""
        readonly property string matches: isOpen ? wizard.filterMatches : ""
        readonly property string place: isOpen ? wizard.spokenPlace : ""
        readonly property string message: isOpen ? wizard.message : ""

        objectName: "heard"
        readonly property string explanation: panel.explanationLabel.shown
                                              ? panel.explanationLabel.text : ""

        onSentenceChanged: announcer.say(sentence)
        readonly property string sameSeat: panel.sameSeatLabel.shown ? panel.sameSeatLabel.text : ""

        onExplanationChanged: announcer.say(heard.explanation)
        onSameSeatChanged: announcer.say(heard.sameSeat)
        onSeatChanged: announcer.say(seat)
        onDotChanged: announcer.say(dot)
        onStepChanged: announcer.say(step)
        onRowChanged: announcer.say(row)
        onMatchesChanged: announcer.say(matches)
        onPlaceChanged: announcer.say(place)
        onMessageChanged: announcer.say(message)
    }
    StatusAnnouncer {
        id: announcer

        objectName: "statusAnnouncer"
        Accessible.role: Accessible.Notification
        Accessible.name: said
    }
    Connections {
        target: panel
        function onTold(words: string): void {
            announcer.say(words);
        }
    }
    SheetCurtain {
        objectName: "sheetCurtain"
        before: root.Window.contentItem
        drawn: sheet.visible || alert.visible
    }

    StatusPanel {
        id: panel

        objectName: "statusPanel"
        viewWidth: root.width
        contentHeight: stack.implicitHeight
        highContrast: wantsHighContrast
    }

    // What the host has behind the panel may be anything.
    Rectangle {
        objectName: "panelGround"
        visible: panel.colours.high && stack.height > 0
        anchors.fill: stack
        anchors.margins: -6
        radius: 6
        color: panel.colours.ground
    }

    // What is hidden takes no room, and neither does the space that belongs to it.
    Item {
        id: stack

        objectName: "contentStackView"
        width: panel.layoutWidth
        implicitHeight: summaryRow.y + summaryRow.height

        Item {
            id: onboarding

            objectName: "onboarding"
            width: stack.width
            height: onboardingLabel.look.shown ? onboardingLabel.height : 0

            StatusText {
                id: onboardingLabel

                objectName: "onboardingLabel"
                look: panel.onboardingLabel
                width: parent.width
            }
        }
        StatusButton {
            id: joinButton

            objectName: "joinButton"
            look: panel.joinButton
            anchors.top: onboarding.bottom
            anchors.topMargin: look.shown ? StatusMetrics.afterOnboardingLabel : 0
            width: stack.width
            height: look.shown ? implicitHeight : 0
            onClicked: panel.initBluetoothPermission()
        }
        Item {
            id: status

            objectName: "status"
            anchors.top: joinButton.bottom
            width: stack.width
            height: statusTextLabel.look.shown ? statusTextLabel.height : 0

            StatusText {
                id: statusTextLabel

                objectName: "statusTextLabel"
                look: panel.statusTextLabel
                width: parent.width
            }
        }
        Item {
            id: explanation

            objectName: "explanation"
            anchors.top: status.bottom
            anchors.topMargin: explanationLabel.look.shown ? StatusMetrics.afterSeatButton : 0
            width: stack.width
            height: explanationLabel.look.shown ? explanationLabel.height : 0

            StatusText {
                id: explanationLabel

                objectName: "explanationLabel"
                look: panel.explanationLabel
                width: parent.width
            }
        }
        StatusButton {
            id: retryButton

            objectName: "retryButton"
            look: panel.retryButton
            anchors.top: explanation.bottom
            anchors.topMargin: look.shown ? StatusMetrics.betweenButtons : 0
            width: stack.width
            height: look.shown ? implicitHeight : 0
            onClicked: panel.retry()
        }
        Item {
            id: sameSeat

            objectName: "sameSeat"
            anchors.top: retryButton.bottom
            anchors.topMargin: sameSeatLabel.look.shown ? StatusMetrics.betweenButtons : 0
            width: stack.width
            height: sameSeatLabel.look.shown ? sameSeatLabel.height : 0

            StatusText {
                id: sameSeatLabel

                objectName: "sameSeatLabel"
                look: panel.sameSeatLabel
                width: parent.width
            }
        }
        StatusButton {
            id: sameSeatButton

            objectName: "sameSeatButton"
            look: panel.sameSeatButton
            anchors.top: sameSeat.bottom
            anchors.topMargin: look.shown ? StatusMetrics.betweenButtons : 0
            width: stack.width
            height: look.shown ? implicitHeight : 0
            onClicked: panel.keepSeat()
        }
        StatusButton {
            id: settingsButton

            objectName: "settingsButton"
            look: panel.settingsButton
            anchors.top: sameSeatButton.bottom
            anchors.topMargin: look.shown ? StatusMetrics.afterStatusText : 0
            width: stack.width
            height: look.shown ? implicitHeight : 0
            onClicked: panel.openAppSettings()
        }
        StatusButton {
            id: seatSelectionButton

            objectName: "seatSelectionButton"
            look: panel.seatSelectionButton
            anchors.top: settingsButton.bottom
            anchors.topMargin: !look.shown ? 0
                               : settingsButton.look.shown ? StatusMetrics.betweenButtons
                                                           : StatusMetrics.afterStatusText
            width: stack.width
            height: look.shown ? implicitHeight : 0
            onClicked: panel.openSeatSelector()
        }
        StatusSummary {
            id: summaryRow

            objectName: "seatSelectionSummaryRow"
            panel: panel
            reducedMotion: root.reducedMotion
            anchors.top: seatSelectionButton.bottom
            anchors.topMargin: panel.summaryShown ? StatusMetrics.afterSeatButton : 0
            width: stack.width
            height: panel.summaryShown ? implicitHeight : 0
        }
    }

    StatusAlert {
        id: alert

        objectName: "statusAlert"
        look: panel.alert
        isMirrored: panel.isRightToLeft
        reducedMotion: root.reducedMotion
        onDismissed: panel.dismissAlert()
        onClosed: root.focusOpener(wasAtKeys)
    }

    // Back to the button that had opened what is closed now.
    function focusOpener(byKeys: bool): void {
        if (seatSelectionButton.visible && seatSelectionButton.enabled)
            seatSelectionButton.forceActiveFocus(byKeys ? Qt.TabFocusReason : Qt.PopupFocusReason);
    }

    SeatSheet {
        id: sheet

        objectName: "seatSheet"
        wizard: panel.wizard
        isMirrored: panel.isRightToLeft
        reducedMotion: root.reducedMotion
        onClosed: root.focusOpener(wasAtKeys)
    }
}
