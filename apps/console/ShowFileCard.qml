// SPDX-License-Identifier: Apache-2.0
// The way to a show, while none is open.
import QtQuick
import HalvoraDemo

DeskCard {
    id: card

    required property CueDesk cues

    visible: !cues.isOpen
    title: "Show"
    note: "cues as a YAML file"

    ShowFile {
        objectName: "closedShowFile"
        width: parent.width
        cues: card.cues
    }
}
