// SPDX-License-Identifier: Apache-2.0
// A show while it is rehearsed: where it is and what comes, the buttons that play it, its cues, and
// the one that is chosen to be changed.
import QtQuick
import HalvoraDemo

DeskCard {
    id: card

    required property ShowConsole desk
    readonly property CueDesk cues: desk.cues
    readonly property bool isBlack: cues.state === "blackout" || cues.state === "panic"
    readonly property real third: (width - 2 * DeskStyle.inset - 2 * 6) / 3

    visible: cues.isOpen
    title: "Show"
    note: cues.isEdited ? "changed, not saved" : "PageDown GO   PageUp back   F6 hold   F7 black   F12 panic"

    DeskText {
        objectName: "showPosition"
        width: parent.width
        wrapMode: Text.Wrap
        font.pixelSize: 16
        font.weight: Font.DemiBold
        text: card.cues.position
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    Grid {
        objectName: "showButtons"
        columns: 3
        spacing: 6

        DeskButton {
            objectName: "showGo"
            width: card.third
            height: 44
            text: "GO"
            isLit: card.cues.next >= 0 && !card.isBlack
            onClicked: card.cues.obey("go")
        }
        DeskButton {
            objectName: "showBack"
            width: card.third
            height: 44
            text: "Back"
            spokenName: "Back to the cue before"
            onClicked: card.cues.obey("back")
        }
        DeskButton {
            objectName: "showHold"
            width: card.third
            height: 44
            text: card.cues.state === "held" ? "Resume" : "Hold"
            spokenName: text + " the show"
            isLit: card.cues.state === "held"
            onClicked: card.cues.holdOrResume()
        }
        DeskButton {
            objectName: "showBlackout"
            width: card.third
            height: 44
            text: "Black out"
            spokenName: "Black out the show"
            isLit: card.cues.state === "blackout"
            onClicked: card.cues.obey("blackout")
        }
        DeskButton {
            objectName: "showRelease"
            width: card.third
            height: 44
            text: "Release"
            enabled: card.isBlack
            onClicked: card.cues.obey("release")
        }
        DeskButton {
            objectName: "showPanic"
            width: card.third
            height: 44
            text: "Panic"
            isLit: card.cues.state === "panic"
            onClicked: card.cues.obey("panic")
        }
    }
    CueStack {
        objectName: "cueStack"
        width: parent.width
        cues: card.cues
    }
    Row {
        objectName: "cueListButtons"
        spacing: 6

        DeskButton {
            objectName: "cueAdd"
            text: "Add cue"
            spokenName: "Add a cue with the look of the controls"
            onClicked: card.cues.addCue()
        }
        DeskButton {
            objectName: "showEnd"
            text: "End show"
            enabled: card.cues.hasAir
            spokenName: "End the show, give the air to the controls"
            onClicked: card.cues.endShow()
        }
    }
    CueEdit {
        objectName: "cueEdit"
        width: parent.width
        cues: card.cues
    }
    ShowFile {
        objectName: "openShowFile"
        width: parent.width
        cues: card.cues
    }
}
