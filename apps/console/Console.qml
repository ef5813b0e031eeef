// SPDX-License-Identifier: Apache-2.0
// A phone, and beside it the console of the operator whose packets it hears; or, in full screen,
// the phone's light alone.
import QtQuick
import QtQuick.Templates as T
import QtQuick.Window
import HalvoraDemo

Window {
    id: window

    required property ShowConsole desk
    readonly property bool isBare: visibility === Window.FullScreen
    readonly property bool isVenue: desk.venue.isOpen
    readonly property bool isWide: width >= 1180 && !isVenue
    // Where the keyboard is, if the user is at the keyboard.
    readonly property Item atKeys: {
        const control = activeFocusItem as T.Control;
        return control && control.visualFocus ? control : activeFocusItem as T.TextField;
    }

    // Whether the keys of modes, blackout and full screen act by themselves. With Ctrl they always
    // do: who speaks to the machine, or brushes against its keys, switches the others off.
    property bool hasSingleKeys: true
    // Escape was pressed on air, where it only says why it does nothing.
    property bool asksToLeave: false

    function turnFull(isHeld: bool): void {
        if (!isHeld)
            visibility = isBare ? Window.Windowed : Window.FullScreen;
    }
    function turnBlack(isHeld: bool): void {
        if (!isHeld)
            desk.isBlackout = !desk.isBlackout;
    }

    objectName: "consoleWindow"
    title: "Halvora · console"
    width: 1320
    height: 900
    minimumWidth: 900
    minimumHeight: 640
    color: isBare ? "black" : DeskStyle.ground
    visible: true
    onClosing: close => close.accepted = window.desk.cues.mayClose()
    onAtKeysChanged: scroller.reveal(atKeys)

    FocusScope {
        id: room

        objectName: "room"
        anchors.fill: parent
        focus: true
        Keys.forwardTo: [cueKeys]
        Keys.onEscapePressed: event => {
            if (event.isAutoRepeat || window.desk.venue.goBack())
                return;
            if (window.desk.isOnAir)
                window.asksToLeave = true;
            else
                window.close();
        }
        Keys.onPressed: event => {
            const isControl = event.modifiers & Qt.ControlModifier;
            const isMeant = isControl || window.hasSingleKeys;
            const digit = event.key - Qt.Key_0;
            event.accepted = true;
            if (event.key === Qt.Key_F11 || (event.key === Qt.Key_F && isMeant))
                window.turnFull(event.isAutoRepeat);
            else if (event.key === Qt.Key_B && isMeant)
                window.turnBlack(event.isAutoRepeat);
            else if (event.key === Qt.Key_Z && isControl)
                event.modifiers & Qt.ShiftModifier ? window.desk.redo() : window.desk.undo();
            else if (digit >= 1 && digit <= 9 && isMeant)
                window.desk.set("mode", digit);
            else
                event.accepted = false;
        }

        CueKeys {
            id: cueKeys

            objectName: "cueKeys"
            cues: window.desk.cues
        }
        Item {
            id: bareScreen

            objectName: "bareScreen"
            anchors.fill: parent
            visible: window.isBare
        }

        Item {
            id: stage

            objectName: "stage"
            visible: !window.isBare
            width: Math.round(window.isVenue ? window.width - Math.min(456, window.width * 0.47)
                                             : Math.min(440, window.width * 0.33))
            height: parent.height

            Column {
                id: heading

                objectName: "heading"
                x: 24
                y: 20
                width: parent.width - 48
                spacing: 4

                DeskText {
                    objectName: "titleText"
                    width: parent.width
                    font.pixelSize: 18
                    font.weight: Font.DemiBold
                    text: "Halvora"
                }
                DeskText {
                    objectName: "statusText"
                    width: parent.width
                    color: DeskStyle.quiet
                    text: "The phone " + window.desk.phoneStatus
                }
                FlashRow {
                    objectName: "flashRow"
                    width: parent.width
                    desk: window.desk
                }
                DeskChoices {
                    objectName: "views"
                    topPadding: 8
                    width: Math.min(parent.width, 240)
                    columns: 2
                    entries: [{number: 0, name: "Phone"}, {number: 1, name: "Venue"}]
                    current: window.isVenue ? 1 : 0
                    what: "view"
                    onChosen: number => window.desk.venue.isOpen = number === 1
                }
            }
            VenueStage {
                objectName: "venueStage"
                visible: window.isVenue
                anchors.top: heading.bottom
                anchors.topMargin: 16
                anchors.bottom: onAir.top
                anchors.bottomMargin: 16
                x: 24
                width: parent.width - 32
                desk: window.desk
            }
            Item {
                id: stand

                objectName: "stand"
                visible: !window.isVenue
                anchors.top: heading.bottom
                anchors.topMargin: 20
                anchors.bottom: onAir.top
                anchors.bottomMargin: 20
                x: 24
                width: parent.width - 48 - back.width - 16
            }
            PhoneBack {
                id: back

                objectName: "phoneBack"
                visible: !window.isVenue
                anchors.right: parent.right
                anchors.rightMargin: 24
                // On the table that the phone's foot stands on.
                y: stand.y + (stand.height + phone.fit * (window.desk.screenHeight + 24)) / 2 - height
                isTorchOn: window.desk.isTorchOn
            }
            // What an operator's hand goes to without a look.
            Row {
                id: onAir

                readonly property real share: (width - 3 * spacing) / 16

                objectName: "airRow"
                x: 24
                anchors.bottom: foot.top
                anchors.bottomMargin: 12
                width: window.isVenue ? parent.width - 32 : parent.width - 48
                spacing: 8

                OnAirButton {
                    objectName: "onAir"
                    width: onAir.share * 5
                    height: 44
                    desk: window.desk
                }
                DeskButton {
                    objectName: "blackout"
                    width: onAir.share * 5
                    height: 44
                    text: window.desk.isBlackout ? "End blackout" : "Blackout"
                    spokenName: "Blackout"
                    isSwitch: true
                    isLit: window.desk.isBlackout
                    onClicked: window.desk.isBlackout = !window.desk.isBlackout
                }
                DeskButton {
                    objectName: "undo"
                    width: onAir.share * 3
                    height: 44
                    text: "Undo"
                    enabled: window.desk.canUndo
                    onClicked: window.desk.undo()
                }
                DeskButton {
                    objectName: "redo"
                    width: onAir.share * 3
                    height: 44
                    text: "Redo"
                    enabled: window.desk.canRedo
                    onClicked: window.desk.redo()
                }
            }
            Item {
                id: foot

                objectName: "foot"
                x: 24
                anchors.bottom: parent.bottom
                anchors.bottomMargin: 12
                width: onAir.width
                height: Math.max(hint.height, singleKeys.height)

                DeskText {
                    id: hint

                    readonly property string control: window.hasSingleKeys ? "" : "Ctrl+"

                    objectName: "hintText"
                    anchors.left: parent.left
                    anchors.right: singleKeys.left
                    anchors.rightMargin: 8
                    anchors.verticalCenter: parent.verticalCenter
                    color: DeskStyle.quiet
                    font.pixelSize: DeskStyle.smallSize
                    wrapMode: Text.WordWrap
                    text: window.asksToLeave && window.desk.isOnAir
                          ? "Still on air: hold On air to leave it first, then Esc quits"
                          : control + "1–9 modes   " + control + "B blackout   " + control
                            + "F light in full screen   Esc " + (window.isVenue ? "back" : "quit")
                }
                DeskButton {
                    id: singleKeys

                    objectName: "singleKeys"
                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    text: "Keys"
                    spokenName: "Single keys"
                    isSwitch: true
                    isLit: window.hasSingleKeys
                    onClicked: window.hasSingleKeys = !window.hasSingleKeys
                }
            }
        }

        PhoneFront {
            id: phone

            readonly property real fit: Math.min(stand.width / (window.desk.screenWidth + 24),
                                                 stand.height / (window.desk.screenHeight + 24))
            property real shake: 0

            objectName: "phone"
            parent: window.isBare ? bareScreen : stand
            isBare: window.isBare
            anchors.centerIn: parent
            anchors.horizontalCenterOffset: shake
            width: window.isBare ? bareScreen.width : window.desk.screenWidth
            height: window.isBare ? bareScreen.height : window.desk.screenHeight
            scale: window.isBare ? 1 : fit
        }
        SequentialAnimation {
            id: shaking

            property int strength: 1

            objectName: "shaking"
            loops: strength === 3 ? 6 : 1
            NumberAnimation {
                target: phone
                property: "shake"
                to: 2 * shaking.strength
                duration: 40
            }
            NumberAnimation {
                target: phone
                property: "shake"
                to: -2 * shaking.strength
                duration: 40
            }
            NumberAnimation {
                target: phone
                property: "shake"
                to: 0
                duration: 40
            }
        }
        Connections {
            target: window.desk
            function onShaken(strength: int): void {
                shaking.strength = strength;
                shaking.restart();
            }
        }

        Flickable {
            id: scroller

            function reveal(control: Item): void {
                for (let item = control; item; item = item.parent) {
                    if (item !== contentItem)
                        continue;
                    const top = control.mapToItem(item, 0, 0).y - DeskStyle.inset;
                    const least = top + control.height + 2 * DeskStyle.inset - height;
                    contentY = Math.max(0, Math.min(Math.max(contentY, least), top));
                }
            }

            objectName: "scroller"
            visible: !window.isBare
            anchors.fill: parent
            anchors.leftMargin: stage.width
            contentHeight: cards.y + cards.height + 24
            boundsBehavior: Flickable.StopAtBounds
            clip: true

            T.ScrollBar.vertical: T.ScrollBar {
                id: bar

                objectName: "scrollBar"
                width: 8
                policy: T.ScrollBar.AsNeeded
                visible: size < 1
                contentItem: Rectangle {
                    objectName: "scrollHandle"
                    implicitWidth: 8
                    radius: 4
                    color: bar.pressed ? DeskStyle.accent : DeskStyle.hovered
                }
            }

            Column {
                id: cards

                readonly property real column: window.isWide ? Math.floor((width - 16) / 2) : width

                objectName: "cards"
                y: 20
                width: scroller.width - 24
                spacing: 16

                CueCard {
                    objectName: "cueCard"
                    width: cards.width
                    desk: window.desk
                }
                ModeCard {
                    objectName: "modeCard"
                    width: cards.width
                    desk: window.desk
                }
                Grid {
                    objectName: "cardGrid"
                    columns: window.isWide ? 2 : 1
                    spacing: 16

                    Column {
                        objectName: "firstColumn"
                        spacing: 16

                        ColourCard {
                            objectName: "colourCard"
                            width: cards.column
                            desk: window.desk
                        }
                        PaletteCard {
                            objectName: "paletteCard"
                            width: cards.column
                            desk: window.desk
                        }
                        RecordCard {
                            objectName: "recordCard"
                            width: cards.column
                            desk: window.desk
                        }
                    }
                    Column {
                        objectName: "secondColumn"
                        spacing: 16

                        TorchCard {
                            objectName: "torchCard"
                            width: cards.column
                            desk: window.desk
                        }
                        ExtrasCard {
                            objectName: "extrasCard"
                            width: cards.column
                            desk: window.desk
                        }
                        MapCard {
                            objectName: "mapCard"
                            width: cards.column
                            desk: window.desk
                        }
                        AirCard {
                            objectName: "airCard"
                            width: cards.column
                            desk: window.desk
                        }
                        ShowFileCard {
                            objectName: "showFileCard"
                            width: cards.column
                            cues: window.desk.cues
                        }
                    }
                }
                PacketCard {
                    objectName: "packetCard"
                    width: cards.width
                    desk: window.desk
                }
            }
        }
    }
}
