// SPDX-License-Identifier: Apache-2.0
// What is on the seat selector's sheet: the heading and below it the picker or the plan, which
// scroll together where there is no room for both, and the buttons at the foot.
import QtQuick
import QtQuick.Templates as T
import Halvora.impl

FocusScope {
    id: content

    required property SeatWizard wizard
    property seatWizardLayout layout
    property bool isMirrored: false
    property bool reducedMotion: false
    // Where the keyboard is, if the user is at the keyboard.
    readonly property Item atKeys: {
        const control = content.Window.activeFocusItem as T.Control;
        return control && control.visualFocus ? control : picker.keyed || plan.keyed;
    }

    // At the top, with what the wizard begins with.
    function begin(): void {
        scroller.contentY = 0;
        picker.jumpTo(content.wizard.pickerIndex);
    }
    function takeFocus(byKeys = false): void {
        body.takeFocus(byKeys);
    }

    objectName: "seatSheetContent"
    focus: true
    LayoutMirroring.enabled: content.isMirrored
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.Dialog
    Accessible.name: content.wizard.titleLabel.text
    Keys.onEscapePressed: event => {
        if (!event.isAutoRepeat)
            content.wizard.leave();
    }
    Keys.onBackPressed: event => {
        if (!event.isAutoRepeat)
            content.wizard.backButton.shown ? content.wizard.back() : content.wizard.leave();
    }
    onAtKeysChanged: scroller.reveal(atKeys)

    // Each step begins where it is answered, whatever button brought it.
    Connections {
        target: content.wizard
        property int step: 1

        function onChanged(): void {
            const isOther = content.wizard.step !== step;
            step = content.wizard.step;
            if (isOther && content.wizard.isPresented)
                body.takeFocus(content.byKeys || content.atKeys !== null);
        }
    }
    // While a button's work is done, whether a key has pressed it: it may be disabled afterwards.
    property bool byKeys: false

    function press(act: var): void {
        byKeys = atKeys !== null;
        act();
        byKeys = false;
    }
    SheetCurtain {
        before: content
        drawn: content.wizard.alert.shown
    }

    SeatSheetTop {
        id: top

        objectName: "seatSheetTop"
        wizard: content.wizard
        x: content.layout.sideMargin
        y: content.layout.topMargin
        width: content.width - 2 * content.layout.sideMargin
        height: implicitHeight
    }
    Flickable {
        id: scroller

        function reveal(control: Item): void {
            for (let item = control; item; item = item.parent) {
                if (item !== scroller.contentItem)
                    continue;
                const top = control.mapToItem(item, 0, 0).y;
                const least = Math.min(top + control.height - height, contentHeight - height);
                contentY = Math.max(0, Math.min(top, Math.max(contentY, least)));
            }
        }

        objectName: "seatSheetScroller"
        anchors.top: top.bottom
        anchors.topMargin: content.layout.spacing
        anchors.bottom: buttons.top
        anchors.bottomMargin: content.layout.spacing
        width: parent.width
        contentHeight: body.y + body.height
        onContentHeightChanged: reveal(content.atKeys)
        interactive: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        SeatHeading {
            id: heading

            objectName: "seatHeading"
            wizard: content.wizard
            layout: content.layout
            x: content.layout.sideMargin
            width: scroller.width - 2 * content.layout.sideMargin
        }
        Item {
            id: body

            readonly property real room: scroller.height - y
            readonly property bool isPicker: content.wizard.pickerShown

            // Where the user goes on after each step.
            function takeFocus(byKeys = false): void {
                isPicker ? picker.takeFocus(byKeys) : plan.takeFocus(byKeys);
            }

            objectName: "seatBody"
            x: content.layout.sideMargin
            y: heading.y + heading.height + content.layout.spacing
            width: heading.width
            // A plan is of use only as a whole.
            readonly property real least: isPicker ? picker.leastHeight
                                                   : Math.min(scroller.height, 320)

            height: Math.max(least, Math.floor(Math.min(content.layout.pickerHeight, room)))

            SeatPicker {
                id: picker

                objectName: "seatPicker"
                wizard: content.wizard
                reducedMotion: content.reducedMotion
                sight: scroller.height
                anchors.fill: parent
                visible: body.isPicker
            }
            SeatPlan {
                id: plan

                objectName: "standingSelectorContainer"
                wizard: content.wizard
                anchors.fill: parent
                visible: !body.isPicker
            }
        }
    }
    Item {
        id: buttons

        objectName: "seatButtons"
        anchors.bottom: parent.bottom
        anchors.bottomMargin: content.layout.sideMargin
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width - 2 * content.layout.sideMargin
        height: Math.max(backButton.implicitHeight, nextButton.implicitHeight)

        // A button that is disabled lets a finger through to here.
        TapHandler {
            objectName: "nextTap"
            enabled: !nextButton.enabled
            onTapped: eventPoint => {
                if (nextButton.contains(nextButton.mapFromItem(buttons, eventPoint.position)))
                    content.wizard.next();
            }
        }

        StatusButton {
            id: backButton

            objectName: "backButton"
            look: content.wizard.backButton
            anchors.left: parent.left
            width: content.layout.backWidth
            height: parent.height
            onClicked: content.press(content.wizard.back)
        }
        StatusButton {
            id: nextButton

            objectName: "nextButton"
            look: content.wizard.nextButton
            anchors.right: parent.right
            width: content.layout.nextWidth
            height: parent.height
            onClicked: content.press(content.wizard.next)
        }
    }
    StatusAlert {
        objectName: "seatAlert"
        look: content.wizard.alert
        isMirrored: content.isMirrored
        reducedMotion: content.reducedMotion
        onDismissed: content.wizard.dismissAlert()
    }
}
