// SPDX-License-Identifier: Apache-2.0
import QtQuick
import QtQuick.Templates as T
import HalvoraDemo

DeskCard {
    id: card

    required property ShowConsole desk
    readonly property bool isBusy: desk.isRecording || desk.isReplaying

    title: "Recording"
    note: desk.isRecording ? "recording" : desk.isReplaying ? "playing" : "a scenario file"

    T.TextField {
        id: file

        objectName: "file"
        width: parent.width
        height: DeskStyle.control
        enabled: !card.isBusy
        opacity: enabled ? 1 : 0.4
        leftPadding: 10
        rightPadding: 10
        verticalAlignment: TextInput.AlignVCenter
        color: DeskStyle.text
        selectionColor: DeskStyle.accent
        selectedTextColor: DeskStyle.inkOverAccent
        font.pixelSize: 12
        selectByMouse: true
        text: card.desk.file
        onTextEdited: card.desk.file = text
        Accessible.role: Accessible.EditableText
        Accessible.name: "Scenario file"

        background: Rectangle {
            objectName: "fileGround"
            radius: DeskStyle.radius
            color: DeskStyle.ground
            border.width: file.activeFocus ? 2 : 1
            border.color: file.activeFocus ? DeskStyle.text : DeskStyle.line
        }
    }
    Row {
        objectName: "recordButtons"
        spacing: 6

        DeskButton {
            objectName: "record"
            width: 88
            enabled: !card.isBusy
            text: "Record"
            onClicked: card.desk.record()
        }
        DeskButton {
            objectName: "replay"
            width: 88
            enabled: !card.isBusy
            text: "Replay"
            onClicked: card.desk.replay()
        }
        DeskButton {
            objectName: "stop"
            width: 88
            enabled: card.isBusy
            isLit: card.isBusy
            text: "Stop"
            onClicked: card.desk.stop()
        }
    }
    DeskText {
        objectName: "recordMessage"
        width: parent.width
        visible: text.length > 0
        color: DeskStyle.quiet
        font.pixelSize: DeskStyle.smallSize
        wrapMode: Text.WrapAnywhere
        text: card.desk.message
    }
}
