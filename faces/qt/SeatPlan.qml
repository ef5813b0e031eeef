// SPDX-License-Identifier: Apache-2.0
// The plan of a standing area: the stage above, and the dot where the user stands, moved by a finger
// or by the arrow keys. A plan is never mirrored: the hall is not.
import QtQuick
import Halvora

FocusScope {
    id: plan

    required property SeatWizard wizard
    readonly property Item keyed: area.isKeyed ? area : null

    // Without the ring that shows where the keyboard is.
    function takeFocus(): void {
        area.forceActiveFocus();
        area.isKeyed = false;
    }

    Rectangle {
        objectName: "standingStageLabel"
        visible: plan.wizard.stageLabel.shown
        width: parent.width
        height: plan.wizard.stageHeight
        color: plan.wizard.stageLabel.background
        radius: plan.wizard.stageLabel.cornerRadius
        border.width: plan.wizard.stageLabel.borderWidth
        border.color: plan.wizard.stageLabel.borderColour

        StatusText {
            objectName: "standingStageText"
            look: plan.wizard.stageLabel
            anchors.fill: parent
            verticalAlignment: Text.AlignVCenter
            fontSizeMode: Text.Fit
            minimumPixelSize: 10
        }
    }
    Item {
        id: area

        // A hidden plan is not laid out: its size comes when it is shown.
        readonly property size laidOut: plan.visible ? Qt.size(width, height) : Qt.size(0, 0)

        property bool isKeyed: false


        objectName: "standingDragArea"
        y: plan.wizard.dragAreaTop
        width: parent.width
        height: Math.max(parent.height - y, 0)
        focus: true
        activeFocusOnTab: true
        onActiveFocusChanged: isKeyed = activeFocus
        onLaidOutChanged: plan.wizard.layOutPlan(laidOut.width, laidOut.height)
        Accessible.role: Accessible.Graphic
        Accessible.name: plan.wizard.spokenPlan
        Accessible.focusable: true
        Keys.onPressed: event => {
            const ways = {
                [Qt.Key_Left]: [-1, 0],
                [Qt.Key_Right]: [1, 0],
                [Qt.Key_Up]: [0, -1],
                [Qt.Key_Down]: [0, 1]
            };
            event.accepted = true;
            isKeyed = true;
            if (event.key in ways)
                plan.wizard.stepOnPlan(...ways[event.key], Boolean(event.modifiers & Qt.ShiftModifier));
            else if (event.key !== Qt.Key_Return && event.key !== Qt.Key_Enter)
                event.accepted = false;
            else if (!event.isAutoRepeat)
                plan.wizard.next();
        }

        Rectangle {
            objectName: "standingAreaOutline"
            anchors.fill: parent
            color: "transparent"
            radius: 10
            border.width: 1
            border.color: StatusMetrics.hairline
        }
        Item {
            objectName: "standingPictureClip"
            anchors.fill: parent
            clip: true

            SeatPlanPicture {
                objectName: "standingOverlayImageView"
                anchors.fill: parent
                wizard: plan.wizard
            }
        }
        MouseArea {
            objectName: "standingTouch"
            anchors.fill: parent
            preventStealing: true
            onPressed: mouse => {
                plan.takeFocus();
                plan.wizard.tapPlan(mouse.x, mouse.y);
            }
            onPositionChanged: mouse => plan.wizard.dragPlan(mouse.x, mouse.y)
        }
        Rectangle {
            objectName: "standingDotView"
            visible: plan.wizard.dotShown
            x: plan.wizard.dotCentre.x - width / 2
            y: plan.wizard.dotCentre.y - height / 2
            width: plan.wizard.dotWidth
            height: width
            radius: plan.wizard.dotCornerRadius
            color: plan.wizard.dotColour
            border.width: plan.wizard.dotBorderWidth
            border.color: plan.wizard.dotBorderColour
        }
        StatusFocusRing {
            objectName: "standingFocusRing"
            around: 10
            visible: area.isKeyed
        }
    }
}
