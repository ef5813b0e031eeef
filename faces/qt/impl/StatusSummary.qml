// SPDX-License-Identifier: Apache-2.0
// The line below the seat button: the chosen seat, and beside the text the dot or the spinner.
import QtQuick
import Halvora.impl

Item {
    id: row

    required property StatusPanel panel
    property bool reducedMotion: false

    visible: panel.summaryShown
    // Beside the dot, or where there is no room for it there, below.
    readonly property real besideDot: panel.dotFrame.x + panel.dotFrame.width + 6
    readonly property bool isWordBelow: besideDot + word.implicitWidth > width

    implicitHeight: panel.summaryTextFrame.height
                    + (panel.dotShown && isWordBelow ? word.implicitHeight : 0)

    // Frames begin at the side where lines begin.
    function mirrored(frame: rect): real {
        return row.panel.isRightToLeft ? row.width - frame.x - frame.width : frame.x;
    }

    StatusText {
        objectName: "seatSelectionSummaryLabel"
        look: row.panel.summaryLabel
        x: row.mirrored(row.panel.summaryTextFrame)
        width: row.panel.summaryTextFrame.width
        height: row.panel.summaryTextFrame.height
        verticalAlignment: Text.AlignVCenter
        wrapMode: row.panel.summaryWraps ? Text.Wrap : Text.NoWrap
        maximumLineCount: row.panel.summaryWraps ? 10 : 1
        // Some scripts are a pixel wider than they measure.
        elide: !row.panel.summaryWraps && width < implicitWidth - 2 ? Text.ElideRight : Text.ElideNone
        Accessible.name: row.panel.spokenSummary
    }
    // Colour alone tells nothing to who cannot see it.
    Text {
        id: word

        objectName: "seatLUTStatusWord"
        visible: row.panel.dotShown
        x: row.mirrored(Qt.rect(row.isWordBelow ? 0 : row.besideDot, 0, width, 0))
        y: row.isWordBelow ? row.panel.summaryTextFrame.height : 0
        width: Math.min(implicitWidth, row.width)
        height: row.isWordBelow ? implicitHeight : row.panel.summaryTextFrame.height
        text: row.panel.dotWord
        textFormat: Text.PlainText
        font: row.panel.summaryLabel.font
        color: row.panel.summaryLabel.colour
        horizontalAlignment: Text.AlignLeft
        verticalAlignment: Text.AlignVCenter
        wrapMode: Text.Wrap
        Accessible.ignored: true
    }
    Rectangle {
        id: dot

        objectName: "seatLUTStatusDot"
        visible: row.panel.dotShown
        x: row.mirrored(row.panel.dotFrame)
        y: row.panel.dotFrame.y
        width: row.panel.dotFrame.width
        height: row.panel.dotFrame.height
        radius: height / 2
        color: row.panel.dotColour
        border.width: row.panel.colours.outlineWidth / 2
        border.color: row.panel.colours.ink
        Accessible.role: Accessible.Indicator
        Accessible.name: row.panel.spokenDot
        onVisibleChanged: {
            pulse.stop();
            scale = 1;
            opacity = 1;
        }

        Connections {
            target: row.panel
            function onPulsed() {
                pulse.restart();
            }
        }
        SequentialAnimation {
            id: pulse

            objectName: "dotPulse"

            ParallelAnimation {
                ScaleAnimator {
                    objectName: "dotGrows"
                    target: dot
                    from: 1
                    to: StatusMetrics.pulseScale
                    duration: StatusMetrics.pulseGrows
                    easing.type: Easing.OutQuad
                }
                OpacityAnimator {
                    objectName: "dotFades"
                    target: dot
                    from: 1
                    to: StatusMetrics.pulseAlpha
                    duration: StatusMetrics.pulseGrows
                    easing.type: Easing.OutQuad
                }
            }
            ParallelAnimation {
                ScaleAnimator {
                    objectName: "dotShrinks"
                    target: dot
                    to: 1
                    duration: StatusMetrics.pulseShrinks
                    easing.type: Easing.InQuad
                }
                OpacityAnimator {
                    objectName: "dotReturns"
                    target: dot
                    to: 1
                    duration: StatusMetrics.pulseShrinks
                    easing.type: Easing.InQuad
                }
            }
        }
    }
    StatusSpinner {
        objectName: "seatSelectionLoadingIndicator"
        visible: row.panel.spinnerShown
        x: row.mirrored(row.panel.spinnerFrame)
        y: row.panel.spinnerFrame.y
        width: row.panel.spinnerFrame.width
        height: row.panel.spinnerFrame.height
        turns: row.panel.spinnerShown && row.panel.summaryShown && !row.reducedMotion
        colour: row.panel.summaryLabel.colour
    }
}
