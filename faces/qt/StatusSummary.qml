// SPDX-License-Identifier: Apache-2.0
// The line below the seat button: the chosen seat, and beside the text the dot or the spinner.
import QtQuick
import Halvora

Item {
    id: row

    required property StatusPanel panel
    readonly property statusPanelLook look: panel.look

    visible: look.summaryShown
    implicitHeight: look.summaryTextFrame.height

    // Frames begin at the side where lines begin.
    function mirrored(frame: rect): real {
        return row.panel.isRightToLeft ? row.width - frame.x - frame.width : frame.x;
    }

    StatusText {
        objectName: "seatSelectionSummaryLabel"
        look: row.look.summaryLabel
        x: row.mirrored(row.look.summaryTextFrame)
        width: row.look.summaryTextFrame.width
        height: row.height
        verticalAlignment: Text.AlignVCenter
    }
    Rectangle {
        objectName: "seatLUTStatusDot"
        visible: row.look.dotShown
        x: row.mirrored(row.look.dotFrame)
        y: row.look.dotFrame.y
        width: row.look.dotFrame.width
        height: row.look.dotFrame.height
        radius: height / 2
        color: row.look.dotColour
        scale: row.panel.dotScale
        opacity: row.panel.dotAlpha
        Accessible.role: Accessible.Indicator
        Accessible.name: row.look.spokenDot
    }
    StatusSpinner {
        objectName: "seatSelectionLoadingIndicator"
        visible: row.look.spinnerShown
        x: row.mirrored(row.look.spinnerFrame)
        y: row.look.spinnerFrame.y
        width: row.look.spinnerFrame.width
        height: row.look.spinnerFrame.height
        turn: row.panel.spinnerTurn
        colour: row.look.summaryLabel.colour
    }
}
