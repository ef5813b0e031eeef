// SPDX-License-Identifier: Apache-2.0
// The seat selector as a sheet over the window: from below on a phone, in the middle of a larger
// space. The picker has its share of the height; where texts and buttons need more than the rest,
// it gives way, and below its least height the sheet scrolls.
import QtQuick
import QtQuick.Templates as T
import Halvora.impl

T.Popup {
    id: root

    required property SeatWizard wizard
    property bool isMirrored: false
    property bool reducedMotion: false

    readonly property seatWizardLayout layout: wizard.layoutIn(width, height)
    readonly property Item space: parent
    readonly property SeatSheetContent content: contentItem as SeatSheetContent
    readonly property bool isNarrow: !space || space.width < 600
    // From edge to edge on a phone, upright or turned.
    readonly property bool isHigh: isNarrow || space.height < 480
    readonly property real restingY: !space ? 0
                                     : isHigh ? space.height - height
                                                : Math.round((space.height - height) / 2)
    // 1 where the sheet comes from, 0 where it rests.
    property real away: 0

    parent: T.Overlay.overlay
    visible: wizard.isPresented
    modal: true
    focus: true
    closePolicy: T.Popup.NoAutoClose
    width: !space ? 0 : isNarrow ? space.width : 540
    height: !space ? 0 : isHigh ? space.height - 10 : Math.min(space.height - 48, 760)
    x: space ? Math.round((space.width - width) / 2) : 0
    y: space ? restingY + Math.round(away * (space.height - restingY)) : 0
    // Whether the keyboard was in use when the sheet went.
    property bool wasAtKeys: false

    onAboutToShow: content.begin()
    onOpened: content.takeFocus()
    onAboutToHide: wasAtKeys = content.atKeys !== null
    onClosed: wizard.leftScreen()

    T.Overlay.modal: Rectangle {
        objectName: "sheetShade"
        // A component of its own for the linter, who sees no ids from outside it.
        // qmllint disable unqualified
        color: root.wizard.colours.shade
        // qmllint enable unqualified
    }
    enter: Transition {
        NumberAnimation {
            property: "away"
            from: 1
            to: 0
            duration: root.reducedMotion ? 0 : StatusMetrics.slide
            easing.type: Easing.OutCubic
        }
    }
    exit: Transition {
        NumberAnimation {
            property: "away"
            to: 1
            duration: root.reducedMotion ? 0 : StatusMetrics.slide
            easing.type: Easing.InCubic
        }
    }
    background: Rectangle {
        objectName: "sheetBackground"
        color: root.wizard.background
        radius: 14
        border.width: root.wizard.colours.lineWidth
        border.color: root.wizard.colours.hairline

        // On a phone the sheet ends where the screen does.
        Rectangle {
            objectName: "sheetFoot"
            visible: root.isHigh
            anchors.bottom: parent.bottom
            width: parent.width
            height: parent.radius
            color: parent.color
        }
    }
    contentItem: SeatSheetContent {
        wizard: root.wizard
        layout: root.layout
        isMirrored: root.isMirrored
        reducedMotion: root.reducedMotion
    }
}
