// SPDX-License-Identifier: Apache-2.0
// What stands above the picker or the plan: what is asked, and what is chosen so far.
// Laid out by anchors, at once and not before the next frame: what stands below is measured.
import QtQuick
import Halvora.impl

Item {
    id: heading

    required property SeatWizard wizard
    property seatWizardLayout layout

    implicitHeight: message.visible ? message.y + message.height : summary.y + summary.height

    StatusText {
        id: title

        objectName: "titleLabel"
        look: heading.wizard.titleLabel
        width: heading.width
        wrapMode: Text.Wrap
        maximumLineCount: 10
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
        maximumLineCount: 10
    }
    // In the ink of the title: it is what to read next.
    Text {
        id: message

        objectName: "wizardMessage"
        visible: text !== ""
        anchors.top: summary.bottom
        anchors.topMargin: heading.layout.spacing
        width: heading.width
        text: heading.wizard.message
        textFormat: Text.PlainText
        font: heading.wizard.stepLabel.font
        color: heading.wizard.titleLabel.colour
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        Accessible.role: Accessible.StaticText
        Accessible.name: text
        Accessible.ignored: text === ""
    }
}
