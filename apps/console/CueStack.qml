// SPDX-License-Identifier: Apache-2.0
// All cues in their order, one stop of the keyboard: arrows choose among them.
import QtQuick
import HalvoraDemo

ListView {
    id: list

    required property CueDesk cues
    readonly property var cue: cues.chosenCue

    function step(by: int): void {
        cues.chosen = Math.max(0, Math.min(count - 1, cues.chosen + by));
    }

    height: Math.min(count * 30, 300)
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    model: cues.rows
    // Whoever plays sees what comes; whoever edits, what they have chosen.
    currentIndex: cues.chosen
    highlightMoveDuration: 0
    activeFocusOnTab: true
    Accessible.role: Accessible.List
    Accessible.name: "Cues" + (cues.chosen >= 0 ? ", " + cue.name + " is chosen" : "")
    Accessible.onIncreaseAction: step(1)
    Accessible.onDecreaseAction: step(-1)
    Keys.onDownPressed: step(1)
    Keys.onUpPressed: step(-1)

    Connections {
        target: list.cues
        function onChanged(): void {
            const shown = list.cues.next >= 0 ? list.cues.next : list.cues.current;
            if (list.cues.chosen < 0 && shown >= 0)
                list.positionViewAtIndex(shown, ListView.Contain);
        }
    }

    delegate: CueRow {
        objectName: "cue" + index
        width: ListView.view.width
        cues: (ListView.view as CueStack).cues
    }

    Rectangle {
        objectName: "cueFocus"
        parent: list
        visible: list.activeFocus
        anchors.fill: parent
        color: "transparent"
        radius: 4
        border.width: 2
        border.color: DeskStyle.text
    }
}
