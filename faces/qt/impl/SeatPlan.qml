// SPDX-License-Identifier: Apache-2.0
// The plan of a standing area: the stage above, and the dot where the user stands, moved by a finger
// or by the arrow keys. Where the venue has a picture of it, what a finger moves over is that picture,
// so its edges are the area's. A plan is never mirrored: the hall is not.
import QtQuick
import Halvora.impl

FocusScope {
    id: plan

    required property SeatWizard wizard
    readonly property Item keyed: area.isKeyed ? area : null

    // Without the ring that shows where the keyboard is, unless the user is there.
    function takeFocus(byKeys = false): void {
        area.forceActiveFocus();
        area.isKeyed = byKeys;
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

        readonly property size picture: plan.wizard.planPictureSize
        readonly property size room: Qt.size(parent.width,
                                             Math.max(parent.height - plan.wizard.dragAreaTop, 0))
        // The picture as large as there is room for it, in its own shape.
        readonly property real fit: picture.width > 0 && picture.height > 0
                                    ? Math.min(room.width / picture.width,
                                               room.height / picture.height) : 0
        property bool isKeyed: false

        objectName: "standingDragArea"
        width: fit > 0 ? Math.round(picture.width * fit) : room.width
        height: fit > 0 ? Math.round(picture.height * fit) : room.height
        x: Math.round((room.width - width) / 2)
        y: plan.wizard.dragAreaTop + Math.round((room.height - height) / 2)
        focus: true
        activeFocusOnTab: true
        onActiveFocusChanged: isKeyed = activeFocus
        onLaidOutChanged: plan.wizard.layOutPlan(laidOut.width, laidOut.height)
        Accessible.role: Accessible.Graphic
        Accessible.name: plan.wizard.spokenPlan
        Accessible.focusable: true
        Accessible.onScrollLeftAction: plan.wizard.stepOnPlan(-1, 0, false)
        Accessible.onScrollRightAction: plan.wizard.stepOnPlan(1, 0, false)
        Accessible.onScrollUpAction: plan.wizard.stepOnPlan(0, -1, false)
        Accessible.onScrollDownAction: plan.wizard.stepOnPlan(0, 1, false)
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
            border.width: plan.wizard.colours.lineWidth
            border.color: plan.wizard.colours.hairline
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
        // A picture has its stage at its upper edge, and nothing in it need say so.
        Rectangle {
            objectName: "standingStageSign"
            visible: area.fit > 0
            anchors.top: parent.top
            anchors.topMargin: 6
            anchors.horizontalCenter: parent.horizontalCenter
            width: Math.min(stageSign.implicitWidth + 20, parent.width)
            height: stageSign.implicitHeight + 6
            radius: 6
            color: plan.wizard.colours.sign

            Text {
                id: stageSign

                objectName: "standingStageSignText"
                anchors.centerIn: parent
                width: Math.min(implicitWidth, area.width - 20)
                text: plan.wizard.stageLabel.text
                textFormat: Text.PlainText
                font: plan.wizard.stageLabel.font
                color: plan.wizard.colours.ink
                fontSizeMode: Text.HorizontalFit
                minimumPixelSize: 10
                elide: Text.ElideRight
                Accessible.ignored: true
            }
        }
        // The four ways as buttons that only a screen reader finds, each at its side of the plan.
        Repeater {
            model: [[-1, 0], [1, 0], [0, -1], [0, 1]]

            Item {
                required property int index
                required property var modelData
                readonly property Item within: parent as Item

                objectName: "planWay" + index
                width: within ? within.width / 3 : 0
                height: within ? within.height / 3 : 0
                x: width * (1 + modelData[0])
                y: height * (1 + modelData[1])
                Accessible.role: Accessible.Button
                // They never leave this file, so what is named here is always there; Qt 6.4 has no
                // word to say so.
                // qmllint disable unqualified
                Accessible.name: plan.wizard.planWays[index]
                Accessible.description: plan.wizard.spokenPlace
                Accessible.onPressAction: plan.wizard.stepOnPlan(modelData[0], modelData[1], false)
                // qmllint enable unqualified
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
            colours: plan.wizard.colours
            visible: area.isKeyed
        }
    }
}
