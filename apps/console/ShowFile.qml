// SPDX-License-Identifier: Apache-2.0
// Which file a show is in, and what came of opening, changing or saving it.
import QtQuick
import HalvoraDemo

Column {
    id: part

    required property CueDesk cues

    spacing: 12

    DeskField {
        objectName: "showFile"
        label: "Show file"
        text: part.cues.file
        onTextEdited: part.cues.file = text
        onAccepted: part.cues.open()
    }
    Row {
        objectName: "showFileButtons"
        spacing: 6

        DeskButton {
            objectName: "openShow"
            width: 88
            text: part.cues.isOpen ? "Open again" : "Open"
            spokenName: text + ", show file"
            onClicked: part.cues.open()
        }
        DeskButton {
            objectName: "saveShow"
            width: 88
            enabled: part.cues.isEdited
            text: "Save"
            spokenName: "Save the show file"
            onClicked: part.cues.save()
        }
    }
    Repeater {
        model: part.cues.faults

        DeskText {
            required property string modelData

            objectName: "showFault"
            width: (parent as ShowFile).width
            wrapMode: Text.Wrap
            font.pixelSize: 12
            text: modelData
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
    }
    DeskText {
        objectName: "showMessage"
        width: parent.width
        visible: text.length > 0
        color: DeskStyle.quiet
        font.pixelSize: 12
        wrapMode: Text.Wrap
        text: part.cues.message
        Accessible.role: Accessible.AlertMessage
        Accessible.name: text
    }
}
