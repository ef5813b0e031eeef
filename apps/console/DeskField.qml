// SPDX-License-Identifier: Apache-2.0
// A line that is written into, with its name before it.
import QtQuick
import QtQuick.Templates as T
import HalvoraDemo

T.TextField {
    id: field

    required property string label
    property int nameWidth: 0

    width: parent ? parent.width : implicitWidth
    height: DeskStyle.control
    opacity: enabled ? 1 : 0.4
    leftPadding: nameWidth + 10
    rightPadding: 10
    verticalAlignment: TextInput.AlignVCenter
    color: DeskStyle.text
    selectionColor: DeskStyle.accent
    selectedTextColor: DeskStyle.inkOverAccent
    font.pixelSize: 12
    selectByMouse: true
    Accessible.role: Accessible.EditableText
    Accessible.name: label

    background: Rectangle {
        objectName: "fieldGround"
        radius: DeskStyle.radius
        color: DeskStyle.ground
        border.width: field.activeFocus ? 2 : 1
        border.color: field.activeFocus ? DeskStyle.text : DeskStyle.line

        DeskText {
            objectName: "fieldName"
            visible: field.nameWidth > 0
            x: 10
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            color: DeskStyle.quiet
            font.pixelSize: 12
            text: field.label
            Accessible.ignored: true
        }
    }
}
