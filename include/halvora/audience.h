// SPDX-License-Identifier: Apache-2.0
// What whoever holds the phone has to say about a show: it is asked before it joins, with a warning
// of flashing light; it may have gentle light, for good; and in mid-show it may leave, resume or
// stay out. State, actions and what is to be seen of it; no drawing.
//
// Main thread only. Nothing here waits. Every function may be called from within a callback, and
// the object may be destroyed there. None throws, but for want of memory.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "halvora/engine.h"
#include "halvora/labels.h"
#include "halvora/panel.h"
#include "halvora/platform/platform.h"
#include "halvora/platform/run_loop.h"
#include "halvora/version.h"
#include "halvora/witness.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// How far they are in.
enum class AudienceStage : std::uint8_t {
  /// Has not joined: no light, and the warning is to be seen.
  asked,
  /// Sees the light, and may leave at any time.
  joined,
  /// Went in mid-show: no light, and it is asked whether to resume.
  left,
  /// No light and no question, until they come back by themselves.
  out,
};

/// What is to be seen. In the stages `asked` and `left` all of it, from top to bottom; in `out` the
/// way back alone, and in `joined` nothing: `leaveButton` is for who cannot tap or type.
struct AudienceViews {
  /// What is asked, in a few words: to join, or to resume.
  StatusText title;
  /// The warning of flashing light, or what leaving has done.
  StatusText message;
  /// Hidden unless the battery is low.
  StatusText batteryLabel;
  /// The words of the switch for gentle light.
  StatusText gentleLabel;
  /// What that switch does.
  StatusText gentleNote;
  Button joinButton;      ///< Calls `join`: into the show, or back into it.
  Button stayOutButton;   ///< Calls `stayOut`.
  Button leaveButton;     ///< Calls `leave`; its title is what is spoken of it.
  Button comeBackButton;  ///< Calls `join`, for who stayed out.
  friend bool operator==(const AudienceViews&, const AudienceViews&) = default;
};

/// What the host decides.
struct AudienceFields {
  /// Otherwise they are in from the start, unless the engine was left already, and may still leave.
  bool asksBeforeJoining = true;
  /// The system's user wants less flashing: the flash limit is on, whatever else is chosen.
  bool reducesFlashing = false;
  Colour textColour = kWhite;               ///< Of every label.
  Colour actionButtonColour = kActionBlue;  ///< Of the buttons' backgrounds.
  Colour actionButtonTitleColour = kWhite;  ///< Of the titles on them.
  friend bool operator==(const AudienceFields&, const AudienceFields&) = default;
};

/// One viewer's choice about one engine: whether they are in, and how gentle the light is for them.
class HalvoraAudienceController {
 public:
  /// Below this level a battery that is not fed is low.
  static constexpr double kLowBattery = 0.2;
  /// Nobody tells of a battery.
  static constexpr Duration kBetweenBatteryLooks = milliseconds(30'000);

  /// The needs of the platform must outlive it. The engine need not: without it there is no show.
  /// `changed` is called whenever something visible has changed, and may be absent.
  HalvoraAudienceController(HalvoraViewController& engine, const Platform& platform,
                            AudienceFields fields = {}, std::function<void()> changed = {});
  /// The choice stays with the engine: who is out stays out until
  /// `HalvoraViewController::comeBack`.
  ~HalvoraAudienceController();
  HalvoraAudienceController(const HalvoraAudienceController&) = delete;
  HalvoraAudienceController& operator=(const HalvoraAudienceController&) = delete;

  /// At any time. Who has joined is not asked again.
  void setFields(AudienceFields fields);
  /// As they were set last.
  const AudienceFields& fields() const { return fields_; }

  /// Comes in, or back: the light is what the show has come to by now.
  void join();
  /// The light fades within 300 ms, and the torch goes off at once. Nothing before joining.
  void leave();
  /// From any stage: no light, and no more question until `join`.
  void stayOut();
  /// Limited flashing, at most 60 % of the brightness, neither torch nor vibration: in force at
  /// once, and kept in the defaults for all later shows.
  void setGentle(bool isGentle);

  /// Changes by the actions above, and by `setFields` where nobody is to be asked any more.
  AudienceStage stage() const { return now_.stage; }
  /// As it was chosen last, in this show or an earlier one.
  bool isGentle() const { return now_.isGentle; }
  /// Has joined, and a show goes on: this is when the audience's keys and taps mean the show.
  bool isInShow() const { return now_.isInShow; }
  /// Below `kLowBattery` and not fed; false where nobody tells. Looked at every
  /// `kBetweenBatteryLooks`, and when a show begins or ends.
  bool isBatteryLow() const { return now_.isBatteryLow; }
  /// What is to be seen; good until the next call that is not const.
  const AudienceViews& views() const { return views_; }
  /// Whether the texts' language runs from the right.
  bool isRightToLeft() const;

 private:
  struct Standing {
    AudienceStage stage;
    bool isGentle = false;
    bool isInShow = false;
    bool isBatteryLow = false;
    friend bool operator==(const Standing&, const Standing&) = default;
  };

  void setStage(AudienceStage stage);
  void applyLimits();
  void look();
  bool seesAShow() const;
  bool seesALowBattery() const;
  std::string textFor(const char* key, const char* fallback) const;
  AudienceViews viewsNow() const;
  void show();

  HalvoraViewController& engine_;
  const Witness engineLife_;
  const Platform platform_;
  AudienceFields fields_;
  const std::function<void()> changed_;
  Standing now_;
  /// As it was when it was last told of.
  Standing told_;
  AudienceViews views_;
  std::shared_ptr<const void> presenceWatch_;
  Timer batteryLooks_;
};

}  // namespace v0
}  // namespace halvora
