// SPDX-License-Identifier: Apache-2.0
// The spinning picker, and above it, for long lists, the line that narrows it. What rests in the
// middle after the user has turned it is chosen; nothing is while rows are read anew.
import QtQuick
import QtQuick.Templates as T
import Halvora.impl

FocusScope {
    id: picker

    required property SeatWizard wizard
    property bool reducedMotion: false

    // No higher than what is in sight at once: letters shrink to their row.
    readonly property real wantedRow: Math.max(Math.ceil(metrics.height * 1.35), StatusMetrics.target)
    readonly property real rowHeight: sight > 0 ? Math.min(wantedRow, Math.max(sight, StatusMetrics.target))
                                                : wantedRow
    readonly property real filterRoom: wizard.filterShown ? filterLine.implicitHeight + 8 : 0
    // What is in sight at once: three rows where there is room for them, else the middle one.
    property real sight: 0
    readonly property int leastRows: sight > 0 && sight < filterRoom + 3 * rowHeight ? 1 : 3
    readonly property real leastHeight: filterRoom + leastRows * rowHeight

    readonly property Item keyed: view.isKeyed ? view : null

    // Without the ring that shows where the keyboard is, unless the user is there.
    function takeFocus(byKeys = false): void {
        view.forceActiveFocus();
        view.isKeyed = byKeys;
    }
    // Goes to a row as the user would.
    function turnTo(index: int): void {
        const to = Math.max(0, Math.min(index, wheel.count - 1));
        const isFar = Math.abs(to - wheel.currentIndex) > 2 * wheel.visibleItemCount;
        wheel.currentIndex = to;
        if (isFar || picker.reducedMotion)
            wheel.positionViewAtIndex(to, T.Tumbler.Center);
        picker.wizard.pick(to);
    }
    function turnBy(rows: int): void {
        turnTo(wheel.currentIndex + rows);
    }
    // Is there at once, and has nothing chosen.
    function jumpTo(index: int): void {
        if (index < 0)
            return;
        (wheel.contentItem as ListView).cancelFlick();
        wheel.currentIndex = index;
        wheel.positionViewAtIndex(index, T.Tumbler.Center);
    }

    Connections {
        target: picker.wizard
        function onPickerMoved(index) {
            if (filterLine.text.trim() !== picker.wizard.filterText)
                filterLine.text = picker.wizard.filterText;
            picker.jumpTo(index);
        }
    }

    FontMetrics {
        id: metrics

        font: picker.wizard.pickerTitle.font
    }
    SeatFilter {
        id: filterLine

        objectName: "seatFilter"
        wizard: picker.wizard
        sight: picker.sight
        visible: picker.wizard.filterShown
        width: parent.width
        onTextChanged: picker.wizard.filter(text)
        Keys.onUpPressed: picker.turnBy(-1)
        Keys.onDownPressed: picker.turnBy(1)
        onAccepted: picker.wizard.enterFilter()
    }
    Rectangle {
        objectName: "pickerBand"
        anchors.verticalCenter: view.verticalCenter
        width: parent.width
        height: picker.rowHeight
        radius: 10
        color: picker.wizard.colours.raised
        border.width: picker.wizard.colours.outlineWidth
        border.color: picker.wizard.colours.hairline

        StatusFocusRing {
            objectName: "pickerFocusRing"
            around: parent.radius
            colours: picker.wizard.colours
            visible: view.isKeyed
        }
    }
    // A control would say of itself what it is, and a tumbler says nothing: so the keyboard and the
    // screen reader are at this item, a list of the rows that are in sight, and the tumbler in it
    // only turns.
    Item {
        id: view

        readonly property alias currentIndex: wheel.currentIndex
        readonly property alias count: wheel.count
        readonly property alias visibleItemCount: wheel.visibleItemCount
        readonly property int page: Math.max(visibleItemCount - 1, 1)
        property bool isKeyed: false

        objectName: "pickerView"
        anchors.horizontalCenter: parent.horizontalCenter
        y: picker.filterRoom + Math.floor((picker.height - picker.filterRoom - height) / 2)
        width: parent.width
        height: wheel.visibleItemCount * picker.rowHeight
        focus: true
        activeFocusOnTab: true
        // Whoever comes otherwise than by the keyboard says so afterwards.
        onActiveFocusChanged: isKeyed = activeFocus
        Accessible.role: Accessible.List
        Accessible.name: picker.wizard.spokenRow
        Accessible.description: picker.wizard.stepText
        Accessible.focusable: true
        Accessible.onIncreaseAction: picker.turnBy(1)
        Accessible.onDecreaseAction: picker.turnBy(-1)
        Accessible.onNextPageAction: picker.turnBy(page)
        Accessible.onPreviousPageAction: picker.turnBy(-page)

        Keys.onPressed: event => {
            const turns = {
                [Qt.Key_Up]: -1,
                [Qt.Key_Down]: 1,
                [Qt.Key_PageUp]: -page,
                [Qt.Key_PageDown]: page,
                [Qt.Key_Home]: -count,
                [Qt.Key_End]: count
            };
            event.accepted = true;
            isKeyed = true;
            if (event.key in turns) {
                picker.turnBy(turns[event.key]);
            } else if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter) {
                if (!event.isAutoRepeat)
                    picker.wizard.next();
            } else if (event.text.trim() !== "" && event.text >= " " && event.text !== "\x7f"
                     && !(event.modifiers & (Qt.ControlModifier | Qt.AltModifier | Qt.MetaModifier))) {
                filterLine.type(event.text);
            } else {
                event.accepted = false;
            }
        }

        T.Tumbler {
            id: wheel

            objectName: "pickerWheel"
            anchors.fill: parent
            // An odd number, so that one is in the middle.
            visibleItemCount: {
                const room = picker.height - picker.filterRoom;
                const fitting = Math.floor(room / picker.rowHeight);
                return Math.max(picker.leastRows, Math.min(fitting % 2 ? fitting : fitting - 1, 9));
            }
            wrap: false
            focusPolicy: Qt.NoFocus
            activeFocusOnTab: false
            model: picker.wizard.rows
            Accessible.ignored: true

            font: picker.wizard.pickerTitle.font
            palette.text: picker.wizard.pickerTitle.colour
            // Rows never leave this file, so what is named here is always there; Qt 6.4 has no word to
            // say so.
            // qmllint disable unqualified
            delegate: SeatPickerRow {
                wizard: picker.wizard
                onChosen: picker.turnTo(index)
            }
            // qmllint enable unqualified
            contentItem: ListView {
                objectName: "pickerList"
                model: wheel.model
                delegate: wheel.delegate
                clip: true
                snapMode: ListView.SnapToItem
                highlightRangeMode: ListView.StrictlyEnforceRange
                preferredHighlightBegin: (height - picker.rowHeight) / 2
                preferredHighlightEnd: (height + picker.rowHeight) / 2
                highlightMoveDuration: 180
                highlightMoveVelocity: -1
                onMovementStarted: picker.takeFocus()
                onMovementEnded: picker.wizard.pick(wheel.currentIndex)

                TapHandler {
                    objectName: "pickerTap"
                    // In the coordinates of all rows.
                    onTapped: eventPoint => {
                        const index = Math.floor(eventPoint.position.y / picker.rowHeight);
                        if (index < 0 || index >= wheel.count)
                            return;
                        picker.takeFocus();
                        picker.turnTo(index);
                    }
                }
            }
        }
    }
}
