// SPDX-License-Identifier: Apache-2.0
// A line of text above the picker. Escape empties it, and leaves it to others once it is empty.
import QtQuick
import QtQuick.Templates as T
import Halvora.impl

T.TextField {
    id: field

    required property SeatWizard wizard
    // How much of the sheet is in sight at once; 0 for as much as is wanted.
    property real sight: 0
    readonly property font letters: wizard.filterLabel.font
    // What is typed ends where the number of matches, and the button beside it, begin.
    readonly property real taken: text === "" ? 14 : clearButton.width + matches.width + 8
    readonly property bool isMirrored: LayoutMirroring.enabled

    // Goes on from what is typed elsewhere.
    function type(text: string): void {
        forceActiveFocus(Qt.ShortcutFocusReason);
        field.text += text;
    }

    implicitHeight: Math.max(contentHeight + topPadding + bottomPadding, StatusMetrics.target)
    leftPadding: isMirrored ? taken : 14
    rightPadding: isMirrored ? 14 : taken
    topPadding: 8
    bottomPadding: 8
    font.family: letters.family
    font.pixelSize: sight > 0 ? Math.max(12, Math.min(letters.pixelSize, Math.floor(sight / 2)))
                              : letters.pixelSize
    color: wizard.pickerTitle.colour
    selectionColor: wizard.closeButton.titleColour
    selectedTextColor: wizard.colours.selectedInk
    selectByMouse: true
    maximumLength: 200
    // Digits begin where lines begin, too.
    horizontalAlignment: TextInput.AlignLeft
    verticalAlignment: TextInput.AlignVCenter
    inputMethodHints: Qt.ImhNoPredictiveText
    placeholderText: wizard.filterHint
    Accessible.name: wizard.filterHint
    Accessible.description: wizard.filterMatches
    // A line is accepted once, however long the key is held.
    Keys.onReturnPressed: event => event.accepted = event.isAutoRepeat
    Keys.onEnterPressed: event => event.accepted = event.isAutoRepeat
    Keys.onEscapePressed: event => {
        event.accepted = text !== "";
        clear();
    }

    Text {
        objectName: "filterHint"
        visible: field.text === "" && field.preeditText === ""
        anchors.fill: parent
        anchors.leftMargin: 14
        anchors.rightMargin: 14
        text: field.placeholderText
        textFormat: Text.PlainText
        font: field.font
        color: field.wizard.filterLabel.colour
        horizontalAlignment: Text.AlignLeft
        verticalAlignment: Text.AlignVCenter
        fontSizeMode: Text.HorizontalFit
        minimumPixelSize: 12
        elide: Text.ElideRight
        Accessible.ignored: true
    }
    Text {
        id: matches

        objectName: "filterMatches"
        visible: field.text !== ""
        anchors.right: clearButton.left
        height: parent.height
        verticalAlignment: Text.AlignVCenter
        width: Math.min(implicitWidth, Math.floor((field.width - clearButton.width) / 2))
        text: field.wizard.filterMatches
        textFormat: Text.PlainText
        font: field.font
        color: field.wizard.filterLabel.colour
        fontSizeMode: Text.HorizontalFit
        minimumPixelSize: 10
        Accessible.ignored: true
    }
    T.AbstractButton {
        id: clearButton

        objectName: "filterClear"
        visible: field.text !== ""
        anchors.right: parent.right
        width: StatusMetrics.target
        height: parent.height
        focusPolicy: Qt.NoFocus
        text: field.wizard.filterClear
        onClicked: field.clear()
        Accessible.role: Accessible.Button
        Accessible.name: text
        Accessible.onPressAction: field.clear()
        contentItem: Text {
            objectName: "filterClearSign"
            text: "\u00d7"
            font: field.font
            color: field.wizard.filterLabel.colour
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            Accessible.ignored: true
        }
    }
    background: Rectangle {
        objectName: "filterBackground"
        radius: 10
        color: field.wizard.colours.raised
        border.width: field.wizard.colours.lineWidth
        border.color: field.wizard.colours.field

        StatusFocusRing {
            objectName: "filterFocusRing"
            around: parent.radius
            colours: field.wizard.colours
            visible: field.activeFocus
        }
    }
}
