// SPDX-License-Identifier: Apache-2.0
// The chosen cue: what is written of it, and its look, which is set by the console's own controls.
import QtQuick
import HalvoraDemo

Column {
    id: part

    required property CueDesk cues
    readonly property var cue: cues.chosenCue

    visible: cues.chosen >= 0
    spacing: 8

    Repeater {
        model: [{key: "name", label: "Name"}, {key: "at", label: "At"},
                {key: "fade", label: "Fade"}, {key: "hold", label: "Hold"}]

        DeskField {
            id: field

            required property var modelData
            readonly property CueDesk cues: (parent as CueEdit).cues
            readonly property int chosen: cues.chosen
            readonly property string stored: cues.chosenCue[modelData.key] ?? ""

            objectName: "cue-" + modelData.key
            label: modelData.label
            nameWidth: 52
            placeholderText: modelData.key === "at" ? "by GO" : ""
            // What was typed and not taken stays with the cue that it was typed for.
            onStoredChanged: text = stored
            onChosenChanged: text = stored
            Component.onCompleted: text = stored
            // Escape takes back what was typed before it means anything else.
            Keys.onEscapePressed: event => {
                event.accepted = text !== stored;
                text = stored;
            }
            onEditingFinished: {
                if (text !== stored)
                    cues.edit(modelData.key, text);
            }
        }
    }
    DeskText {
        objectName: "cueLookText"
        width: parent.width
        color: DeskStyle.quiet
        font.pixelSize: DeskStyle.smallSize
        wrapMode: Text.Wrap
        text: part.cue.look ?? ""
        Accessible.role: Accessible.StaticText
        Accessible.name: "Look " + text
    }
    Flow {
        objectName: "cueEditButtons"
        width: parent.width
        spacing: 6

        DeskButton {
            objectName: "cueGoto"
            text: "Go to"
            spokenName: "Go to " + (part.cue.name ?? "")
            onClicked: part.cues.goToChosen()
        }
        DeskButton {
            objectName: "cueShow"
            text: "Look to controls"
            onClicked: part.cues.showLook()
        }
        DeskButton {
            objectName: "cueStore"
            text: "Controls to look"
            onClicked: part.cues.storeLook()
        }
        DeskButton {
            objectName: "cueRemove"
            text: "Remove"
            spokenName: "Remove " + (part.cue.name ?? "")
            onClicked: part.cues.removeCue()
        }
    }
}
