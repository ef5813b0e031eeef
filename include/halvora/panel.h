// SPDX-License-Identifier: Apache-2.0
// The status panel that a host embeds: tells where the phone is, asks for permission, opens the
// settings, and has the user's seat chosen and its tables built. State, actions and what is to be
// seen; no drawing. A face makes one for each panel that it shows, and keeps no copy of its values.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/labels.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/time.h"
#include "halvora/version.h"
#include "halvora/wizard.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

class HalvoraViewController;
struct Platform;

/// Of any number of lines, unless it says otherwise.
struct StatusText : Label {
  StatusText() { lines = 0; }
  friend bool operator==(const StatusText&, const StatusText&) = default;
};

/// How the dot pulses: it is scaled about its centre and fades, slower and slower, and goes back to
/// how it was, faster and faster. It is plain at either end.
struct DotPulse {
  double scale;    ///< Of its size, in the middle of the pulse.
  double alpha;    ///< Likewise, 0 to 1.
  Duration there;  ///< From plain to the middle.
  Duration back;   ///< From the middle to plain.
};
/// The one pulse that there is.
inline constexpr DotPulse kDotPulse{1.35, 0.8, milliseconds(110), milliseconds(140)};

/// A circle beside the summary: whether the seat's tables are ready.
struct StatusDot {
  bool hidden = true;  ///< As long as no seat is chosen.
  Colour colour;       ///< `kDotAmber` or `kDotGreen`.
  /// In the summary row; all 0 until a face has measured the text.
  Rect frame;
  /// In media time; none if no pulse is to be shown. A later one replaces the one that runs.
  std::optional<Duration> pulseBegan;
  /// What the colour says, for who cannot see it.
  std::string spoken;
  friend bool operator==(const StatusDot&, const StatusDot&) = default;
};
/// In points: half of the dot's side.
inline constexpr double kDotCornerRadius = 4;
/// Tables are missing yet.
inline constexpr Colour kDotAmber{1.0F, 0.624F, 0.102F, 1};
/// All tables of the seat are there.
inline constexpr Colour kDotGreen{0.129F, 0.773F, 0.365F, 1};

/// The sign that something is under way.
struct LoadingIndicator {
  bool isAnimating = false;  ///< Turns and is seen; otherwise neither.
  /// Like the dot's.
  Rect frame;
  friend bool operator==(const LoadingIndicator&, const LoadingIndicator&) = default;
};
/// In points, of either side.
inline constexpr double kLoadingIndicatorSize = 20;

/// Of the dot and the loading indicator from the text that they stand beside.
inline constexpr double kSummaryGap = 6;

/// The line about the seat, with its dot.
struct SeatSelectionSummaryRow {
  bool hidden = false;                             ///< With all that is in it.
  StatusText seatSelectionSummaryLabel;            ///< Which seat is chosen, or that none is.
  StatusDot seatLUTStatusDot;                      ///< Beside the text.
  LoadingIndicator seatSelectionLoadingIndicator;  ///< Beside it while a map is read.
  friend bool operator==(const SeatSelectionSummaryRow&, const SeatSelectionSummaryRow&) = default;
};

/// What is to be seen: the stack, from top to bottom.
struct StatusPanelViews {
  /// None once it was taken out of the panel, as the button is with it.
  std::optional<StatusText> onboardingLabel;
  std::optional<Button> joinButton;  ///< Calls `initBluetoothPermission`.
  StatusText statusTextLabel;        ///< Whether the phone is in the venue, or why it cannot be.
  /// Hidden, unless the host wants states explained.
  StatusText explanationLabel;
  Button retryButton;  ///< Calls `retry`; hidden, unless that may help.
  /// Hidden, unless a seat of another day is asked about.
  StatusText sameSeatLabel;
  Button sameSeatButton;       ///< Calls `keepSeat`; hidden with its label.
  Button settingsButton;       ///< Calls `openAppSettings`; hidden, unless that may help.
  Button seatSelectionButton;  ///< Calls `openSeatSelector`; hidden where there are no seats.
  SeatSelectionSummaryRow seatSelectionSummaryRow;  ///< The last line.
  friend bool operator==(const StatusPanelViews&, const StatusPanelViews&) = default;
};

inline constexpr double kSpacingAfterOnboardingLabel = 20;     ///< In points.
inline constexpr double kSpacingAfterStatusText = 20;          ///< In points.
inline constexpr double kSpacingAfterSeatSelectionButton = 6;  ///< In points.

/// A blue that letters can be read on, white ones, and that can be read itself, on black: 4.58 to 1
/// both ways.
inline constexpr Colour kActionBlue = colourOfBytes(8, 114, 232);

/// What the host decides about the panel.
struct StatusPanelFields {
  Colour statusTextColour = kWhite;  ///< Of every label.
  /// Empty, or unknown to the phone, for the system's font.
  std::string statusTextFontName;
  double statusTextFontSize = 17;                              ///< In points.
  TextAlignment statusTextAlignment = TextAlignment::natural;  ///< Of every label.
  Colour actionButtonColour = kActionBlue;                     ///< Of the buttons' backgrounds.
  Colour actionButtonTitleColour = kWhite;                     ///< Of the titles on them.
  std::string actionButtonTitleFontName;                       ///< As for the labels.
  double actionButtonTitleFontSize = 17;                       ///< In points.
  double actionButtonHeight = 44;                              ///< In points, at least.
  /// The venue as long as no transmitter has been heard; below 1 for none.
  std::int64_t defaultVenueId = 0;
  /// The settings button is there for who has Bluetooth switched off, too, and not only for who is
  /// not allowed to use it: where opening the settings switches it on.
  bool offersSettingsWhenOff = false;
  /// Below the status sentence stands which of its causes it is (no radio, switched off, not
  /// allowed, waiting for an answer, nothing heard, a signal that is lost, a map that is missing),
  /// and where trying again may help, a button that does.
  bool explainsStates = false;
  /// A seat that was chosen on another day is asked about, once for each day: whether it still
  /// holds. The seat button is the way to another one.
  bool asksOnAnotherDay = false;
  friend bool operator==(const StatusPanelFields&, const StatusPanelFields&) = default;
};

/// A scroll view of the host that the panel lies in, as a face shows it.
class ScrollView {
 public:
  /// What of its scrolling can be switched off.
  struct Flags {
    bool isScrollEnabled = true;  ///< Follows the finger.
    bool bounces = true;          ///< Goes beyond its ends and back.
  };
  virtual ~ScrollView() = default;
  /// As they are at present, whoever set them.
  virtual Flags flags() const = 0;
  /// In force at once, in the middle of a touch too.
  virtual void setFlags(Flags flags) = 0;
};

/// What only a face can tell or do. Any of it may be absent. What is asked must leave the panel
/// alive, but for `fittingHeight`, which lays views out and so may let others act.
struct StatusPanelFace {
  /// For the fonts that the host has named.
  FontLookup hasFont;
  /// The height that the stack of views needs at that width. May destroy the panel or the engine.
  std::function<double(double width)> fittingHeight;
  /// Where the label's text, not the label, lies in the summary row.
  std::function<Rect(const StatusText& label)> summaryTextFrame;
  /// From the inside out.
  std::function<std::vector<std::shared_ptr<ScrollView>>()> ancestorScrollViews;
  /// Something visible has changed. May destroy the panel or the engine.
  std::function<void()> changed;
};

/// Main thread only. No function waits for anything: maps are read and tables are built in the
/// background, and the face hears of what has become of them. Every function may be called from
/// within a callback of the face or the engine, and each may destroy the panel by way of the face;
/// the panel itself may be destroyed at any time, while its wizard is on screen or tables are being
/// built too. None throws, but for want of memory; what fails is seen on the panel, or tried again.
class HalvoraStatusViewController {
 public:
  /// The needs of the platform must outlive the panel. The engine need not: without it the panel
  /// stands still.
  static std::unique_ptr<HalvoraStatusViewController> make(HalvoraViewController& engine,
                                                           const Platform& platform,
                                                           StatusPanelFace face = {});
  virtual ~HalvoraStatusViewController() = default;
  HalvoraStatusViewController(const HalvoraStatusViewController&) = delete;
  HalvoraStatusViewController& operator=(const HalvoraStatusViewController&) = delete;

  /// At any time; they take effect at once.
  virtual void setFields(StatusPanelFields fields) = 0;
  /// As they were set last.
  virtual const StatusPanelFields& fields() const = 0;

  /// Shows the panel, and keeps it up to date from then on, twice a second. Once, before any of the
  /// following.
  virtual void viewDidLoad() = 0;
  /// After every layout pass, with the width that the panel was given; 0 for none yet.
  virtual void viewDidLayoutSubviews(double viewWidth) = 0;

  // Actions of the user, each by the button that is named like it. One that can do nothing at
  // present does nothing.
  /// Has the engine listen, and the system ask the user where that is open.
  virtual void initBluetoothPermission() = 0;
  /// Leaves the application for the system's page about it, where there is one.
  virtual void openAppSettings() = 0;
  /// Asks the radio, and reads the seat map, once more.
  virtual void retry() = 0;
  /// Shows the wizard as soon as the venue's map is there, or an alert where there is none. Nothing
  /// while either is shown.
  virtual void openSeatSelector() = 0;
  /// The seat of another day still holds.
  virtual void keepSeat() = 0;
  /// The alert's button.
  virtual void dismissAlert() = 0;

  /// The seat on the user's ticket, each by the name that the map shows ("Row 8") or by what the
  /// ticket calls it ("8"); capitals do not matter. It is stored as if it had been confirmed in the
  /// wizard, as soon as the venue's map is there. One that the map has not got opens the wizard
  /// with what there is of it and a message, and so does a standing area, which is chosen at the
  /// venue. A later seat takes the place of one that still waits.
  virtual void setSeat(std::string_view section, std::string_view row, std::string_view seat) = 0;
  /// The same from a link that has the three as query items, in any order and among others:
  /// "https://tickets.example/show?section=209&row=8&seat=10". False, and nothing is done, for any
  /// other link, and for one of more than 2048 bytes.
  virtual bool openLink(std::string_view link) = 0;

  /// What is to be seen. This reference and the alert's are good until the panel is asked to do
  /// something else.
  virtual const StatusPanelViews& views() const = 0;
  /// The size that the panel would like to have; no height until its face has measured one.
  virtual Size preferredContentSize() const = 0;
  /// What lies over the panel; none, as a rule.
  virtual const std::optional<Alert>& presentedAlert() const = 0;
  /// Null for none. Whoever is still drawing it may keep it for that long, also without the panel.
  virtual std::shared_ptr<HalvoraSeatSelectorViewController> presentedSeatSelector() const = 0;

  /// The kit's own text for a key, or `fallback` when its table has none.
  virtual std::string hvLocalizedStringForKey(std::string_view key,
                                              std::string_view fallback) const = 0;

  /// Holds the face's scroll views still, for whoever needs the finger for the panel, and lets them
  /// go again as they were. The panel does neither by itself.
  virtual void disableAncestorScrollViewsIfNeeded() = 0;
  virtual void restoreAncestorScrollViewsIfNeeded() = 0;  ///< The end of the former.

 protected:
  HalvoraStatusViewController() = default;
};

}  // namespace v0
}  // namespace halvora
