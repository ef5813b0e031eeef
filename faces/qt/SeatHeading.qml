// SPDX-License-Identifier: Apache-2.0
// What stands above the picker or the plan: the way out, what is asked, and what is chosen so far.
// Laid out by anchors, at once and not before the next frame: what stands below is measured.
import QtQuick
import Halvora

Item {
    id: heading

    required property SeatWizard wizard
    property seatWizardLayout layout

    implicitHeight: summary.y + summary.height

    StatusButton {
        id: close

        objectName: "closeButton"
        look: heading.wizard.closeButton
        anchors.left: parent.left
        leftPadding: mirrored ? 16 : 0
        rightPadding: mirrored ? 0 : 16
        height: Math.max(implicitHeight, 32)
        onClicked: heading.wizard.close()
    }
    StatusText {
        id: title

        objectName: "titleLabel"
        anchors.top: close.bottom
        anchors.topMargin: heading.layout.spacing
        look: heading.wizard.titleLabel
        width: heading.width
        wrapMode: Text.Wrap
        maximumLineCount: 3
        Accessible.role: Accessible.Heading
    }
    StatusText {
        id: step

        objectName: "stepLabel"
        anchors.top: title.bottom
        anchors.topMargin: heading.layout.spacing
        look: heading.wizard.stepLabel
        width: heading.width
    }
    StatusText {
        id: summary

        objectName: "selectionSummaryLabel"
        anchors.top: step.bottom
        anchors.topMargin: heading.layout.spacing
        look: heading.wizard.selectionSummaryLabel
        width: heading.width
        wrapMode: Text.Wrap
        maximumLineCount: 3
    }
}
