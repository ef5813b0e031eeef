// SPDX-License-Identifier: Apache-2.0
// What is on the seat selector's sheet: the heading and below it the picker or the plan, which
// scroll together where there is no room for both, and the buttons at the foot.
import QtQuick
import QtQuick.Templates as T
import Halvora

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
    function takeFocus(): void {
        body.takeFocus();
    }

    objectName: "seatSheetContent"
    focus: true
    LayoutMirroring.enabled: content.isMirrored
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.Dialog
    Accessible.name: content.wizard.titleLabel.text
    Keys.onEscapePressed: event => {
        if (!event.isAutoRepeat)
            content.wizard.close();
    }
    Keys.onBackPressed: event => {
        if (!event.isAutoRepeat)
            content.wizard.backButton.shown ? content.wizard.back() : content.wizard.close();
    }
    onAtKeysChanged: scroller.reveal(atKeys)

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
        anchors.top: parent.top
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
            y: content.layout.topMargin
            width: scroller.width - 2 * content.layout.sideMargin
        }
        Item {
            id: body

            readonly property real room: scroller.height - y
            readonly property bool isPicker: content.wizard.pickerShown

            // Where the user goes on after each step.
            function takeFocus(): void {
                isPicker ? picker.takeFocus() : plan.takeFocus();
            }

            objectName: "seatBody"
            x: content.layout.sideMargin
            y: heading.y + heading.height + content.layout.spacing
            width: heading.width
            height: Math.max(picker.leastHeight,
                             Math.floor(Math.min(content.layout.pickerHeight, room)))
            onIsPickerChanged: takeFocus()

            SeatPicker {
                id: picker

                objectName: "seatPicker"
                wizard: content.wizard
                reducedMotion: content.reducedMotion
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

        StatusButton {
            id: backButton

            objectName: "backButton"
            look: content.wizard.backButton
            anchors.left: parent.left
            width: content.layout.backWidth
            height: parent.height
            onClicked: content.wizard.back()
        }
        StatusButton {
            id: nextButton

            objectName: "nextButton"
            look: content.wizard.nextButton
            anchors.right: parent.right
            width: content.layout.nextWidth
            height: parent.height
            onClicked: content.wizard.next()
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
