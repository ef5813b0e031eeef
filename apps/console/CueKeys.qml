// SPDX-License-Identifier: Apache-2.0
// The keys that play a show wherever the keyboard is: none of them is a letter, so none is in the way
// of what somebody types or says, and a presenter's remote has the first two.
import QtQuick
import HalvoraDemo

Item {
    id: keys

    required property CueDesk cues

    Keys.onPressed: event => {
        if (!keys.cues.isOpen)
            return;
        event.accepted = true;
        // A key that is held acts once.
        if (event.key === Qt.Key_PageDown)
            event.isAutoRepeat || keys.cues.obey("go");
        else if (event.key === Qt.Key_PageUp)
            event.isAutoRepeat || keys.cues.obey("back");
        else if (event.key === Qt.Key_F6)
            event.isAutoRepeat || keys.cues.holdOrResume();
        else if (event.key === Qt.Key_F7)
            event.isAutoRepeat || keys.cues.blackOrRelease();
        else if (event.key === Qt.Key_F12)
            event.isAutoRepeat || keys.cues.obey("panic");
        else
            event.accepted = false;
    }
}
