// SPDX-License-Identifier: Apache-2.0
// A switch with its words beside it and what it does below them. The whole of it may be pressed.
import QtQuick
import QtQuick.Templates as T
import Halvora.impl

T.Switch {
    id: root

    property labelLook label
    property labelLook note
    property bool isOn: false

    // For the other state than the present one.
    signal switched()

    implicitHeight: Math.max(words.implicitHeight, track.height) + topPadding + bottomPadding
    padding: 12
    text: label.text
    checked: isOn
    focusPolicy: Qt.StrongFocus
    Accessible.role: Accessible.CheckBox
    Accessible.name: label.text
    Accessible.description: note.text
    Accessible.checkable: true
    Accessible.checked: isOn
    Accessible.onToggleAction: switched()
    Accessible.onPressAction: switched()
    // It shows what is in force, and not what was asked for.
    onToggled: {
        checked = Qt.binding(() => root.isOn);
        switched();
    }
    // A key that is held acts once.
    Keys.onPressed: event => {
        const isReturn = event.key === Qt.Key_Return || event.key === Qt.Key_Enter;
        event.accepted = isReturn || (event.isAutoRepeat && event.key === Qt.Key_Space);
        if (isReturn && !event.isAutoRepeat)
            root.switched();
    }
    Keys.onReleased: event => event.accepted = event.isAutoRepeat && event.key === Qt.Key_Space

    // Made at once, as what is in it has ids.
    // qmllint disable deferred-property-id
    contentItem: Item {
        // qmllint enable deferred-property-id
        objectName: "gentleContent"

        Column {
            id: words

            objectName: "gentleWords"
            anchors.left: parent.left
            anchors.right: track.left
            anchors.rightMargin: 16
            anchors.verticalCenter: parent.verticalCenter
            spacing: 4

            StatusText {
                objectName: "gentleLabel"
                look: root.label
                width: words.width
                Accessible.ignored: true
            }
            StatusText {
                objectName: "gentleNote"
                look: root.note
                width: words.width
                Accessible.ignored: true
            }
        }
        // On and off differ by place and by form, not by colour alone.
        Rectangle {
            id: track

            objectName: "gentleTrack"
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            width: 52
            height: 30
            radius: height / 2
            color: root.isOn ? root.label.colours.ink : "transparent"
            border.width: 2
            border.color: root.label.colours.ink

            Rectangle {
                objectName: "gentleKnob"
                readonly property bool isAtRight: root.isOn !== root.mirrored

                x: isAtRight ? parent.width - width - 6 : 6
                anchors.verticalCenter: parent.verticalCenter
                width: 18
                height: 18
                radius: 9
                color: root.isOn ? root.label.colours.ringInside : root.label.colours.ink
            }
        }
    }
    background: Rectangle {
        objectName: "gentleBackground"
        color: root.label.colours.raised
        radius: 8
        border.width: root.label.colours.lineWidth
        border.color: root.label.colours.hairline

        StatusFocusRing {
            objectName: "gentleFocusRing"
            around: parent.radius
            colours: root.label.colours
            visible: root.visualFocus
        }
    }
}
