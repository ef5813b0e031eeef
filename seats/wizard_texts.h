// SPDX-License-Identifier: Apache-2.0
// Every text of the seat selector: the key in the kit's string table, and the English that stands
// in for a missing one. Values, any thread.
#pragma once

namespace halvora::seat_selector {

struct Text {
  const char* key;
  const char* fallback;
};

inline constexpr Text kClose{"hv_seat_picker_close", "Close"};
inline constexpr Text kTitle{"hv_seat_picker_title", "Select Seat"};
inline constexpr Text kTitleStanding{"hv_seat_picker_title_standing", "Select Standing Location"};
inline constexpr Text kDescription{
    "hv_seat_picker_description",
    "We need to know where you're sitting or standing so we can light up your phone in exactly the "
    "right place as part of the interactive light show."};
inline constexpr Text kDragHint{"hv_seat_picker_drag_hint",
                                "Drag the dot to where you're standing in the venue"};
inline constexpr Text kStage{"hv_seat_picker_stage", "Stage"};
inline constexpr Text kBack{"hv_seat_picker_back", "Back"};
inline constexpr Text kNext{"hv_seat_picker_next", "Next"};
inline constexpr Text kConfirmSeat{"hv_seat_picker_confirm_seat", "Confirm Seat"};
inline constexpr Text kConfirmLocation{"hv_seat_picker_confirm_location", "Confirm Location"};
inline constexpr Text kSummaryFormat{"hv_seat_picker_summary_format", "%@  |  %@  |  %@"};
inline constexpr Text kStandingLabel{"hv_seat_picker_standing_label", "Standing"};
inline constexpr Text kStandingAlertTitle{"hv_seat_picker_alert_standing_title",
                                          "Standing Location At Venue"};
inline constexpr Text kStandingAlertMessage{
    "hv_seat_picker_alert_standing_message",
    "If you've got a standing ticket, please select your location once you've arrived at the "
    "venue."};
inline constexpr Text kOk{"hv_common_ok", "OK"};
inline constexpr Text kSpokenPlan{"hv_seat_picker_spoken_plan",
                                  "Plan of the standing area. The arrow keys move the dot."};
inline constexpr Text kSpokenPlace{"hv_seat_picker_spoken_place_format",
                                   "%ld percent from the left, %ld percent from the stage"};

inline constexpr Text kLeave{"hv_seat_picker_leave",
                             "Your choice is not confirmed. Once more closes without it."};

/// By step: section, row, seat.
inline constexpr Text kChooseFirst[] = {
    {"hv_seat_picker_choose_section", "Please choose a section first."},
    {"hv_seat_picker_choose_row", "Please choose a row first."},
    {"hv_seat_picker_choose_seat", "Please choose a seat first."}};
/// What stands before each on a ticket, several words parted by blanks.
inline constexpr Text kTicketWords[] = {
    {"hv_seat_find_words_section", "section sec sect block area"},
    {"hv_seat_find_words_row", "row"},
    {"hv_seat_find_words_seat", "seat place"}};
/// What was asked for and, below the section, what it was looked for in, and the first and last of
/// what there is.
inline constexpr Text kNotFound[] = {
    {"hv_seat_find_no_section_format", "No section %@ at this venue"},
    {"hv_seat_find_no_row_format", "No row %@ in section %@, rows %@ to %@"},
    {"hv_seat_find_no_seat_format", "No seat %@ in row %@, seats %@ to %@"}};
inline constexpr Text kPlaceholders[] = {
    {"hv_seat_picker_placeholder_section", "Select section..."},
    {"hv_seat_picker_placeholder_row", "Select row..."},
    {"hv_seat_picker_placeholder_seat", "Select seat..."}};
inline constexpr Text kItemFormats[] = {{"hv_seat_picker_fallback_section_format", "Section %ld"},
                                        {"hv_seat_picker_fallback_row_format", "Row %ld"},
                                        {"hv_seat_picker_fallback_seat_format", "Seat %ld"}};

}  // namespace halvora::seat_selector
