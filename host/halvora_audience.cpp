// SPDX-License-Identifier: Apache-2.0
#include <string>
#include <utility>
#include <variant>

#include "halvora/audience.h"
#include "halvora/platform/battery.h"
#include "halvora/platform/user_defaults.h"

namespace halvora {

namespace {

constexpr const char* kGentleKey = "gentleLight";

struct Words {
  const char* key;
  const char* fallback;
};

struct LabelRow {
  StatusText AudienceViews::*label;
  double size;
  FontWeight weight;
  Words words;
};
constexpr LabelRow kLabels[] = {
    {&AudienceViews::batteryLabel,
     15,
     FontWeight::semibold,
     {"hv_audience_battery_low",
      "Your battery is below 20 percent. A show takes light and Bluetooth."}},
    {&AudienceViews::gentleLabel, 17, FontWeight::semibold, {"hv_audience_gentle", "Gentle light"}},
    {&AudienceViews::gentleNote,
     14,
     FontWeight::regular,
     {"hv_audience_gentle_note",
      "At most three flashes a second, less bright, without torch and vibration. Stays on for "
      "later shows."}},
};

struct ButtonRow {
  Button AudienceViews::*button;
  Words words;
};
constexpr ButtonRow kStayOut{&AudienceViews::stayOutButton, {"hv_audience_stay_out", "Stay Out"}};
constexpr ButtonRow kLeaveTheLight{&AudienceViews::leaveButton,
                                   {"hv_audience_leave", "Leave the light show"}};
constexpr ButtonRow kComeBack{&AudienceViews::comeBackButton,
                              {"hv_audience_come_back", "Back to the Light Show"}};

// What is asked depends on whether they have been in.
struct Question {
  Words title;
  Words message;
  Words join;
};
constexpr Question kBeforeJoining{
    {"hv_audience_warning_title", "This show contains flashing light"},
    {"hv_audience_warning_message",
     "Flashing light can bring on seizures in people with photosensitive epilepsy. During the show "
     "Back, Esc or three quick taps take the light away."},
    {"hv_audience_join", "Join the Light Show"}};
constexpr Question kAfterLeaving{
    {"hv_audience_left_title", "The light is off"},
    {"hv_audience_left_message",
     "The show goes on without your phone. Come back whenever you like."},
    {"hv_audience_resume", "Resume"}};

constexpr double kAudienceButtonSize = 17;
constexpr double kAudienceButtonHeight = 48;
constexpr double kAudienceCornerRadius = 8;
// Over what lies behind, whatever that is.
// It stands out from black by 3.3 to 1, and the white of its words from it by 6.4.
constexpr Colour kQuietGround = colourOfBytes(94, 94, 102);

// Who stays out does so until they come back, though their choice may have been taken elsewhere.
AudienceStage firstStage(const HalvoraViewController& engine, const AudienceFields& fields) {
  if (fields.asksBeforeJoining) return AudienceStage::asked;
  return engine.hasLeft() ? AudienceStage::out : AudienceStage::joined;
}

bool storedGentle(const UserDefaults& defaults) {
  const DefaultsValue* value = defaults.find(kGentleKey);
  const bool* flag = value != nullptr ? std::get_if<bool>(&value->storage) : nullptr;
  return flag != nullptr && *flag;
}

}  // namespace

HalvoraAudienceController::HalvoraAudienceController(HalvoraViewController& engine,
                                                     const Platform& platform,
                                                     AudienceFields fields,
                                                     std::function<void()> changed)
    : engine_(engine),
      engineLife_(engine.life()),
      platform_(platform),
      fields_(fields),
      changed_(std::move(changed)),
      now_{.stage = firstStage(engine, fields),
           .isGentle = storedGentle(platform.defaults),
           .isBatteryLow = seesALowBattery()},
      told_(now_) {
  // Nothing of a show is to be seen before it has been joined.
  if (now_.stage == AudienceStage::asked) engine_.leave();
  applyLimits();
  now_.isInShow = seesAShow();
  show();
  presenceWatch_ = engine_.watchPresence([this] { look(); });
  RunLoop& loop = platform_.runLoop;
  batteryLooks_ = Timer(loop, loop.every(kBetweenBatteryLooks, [this] { look(); }));
}

HalvoraAudienceController::~HalvoraAudienceController() = default;

void HalvoraAudienceController::setFields(AudienceFields fields) {
  fields_ = fields;
  applyLimits();
  if (!fields_.asksBeforeJoining && now_.stage == AudienceStage::asked) return join();
  show();
}

void HalvoraAudienceController::join() { setStage(AudienceStage::joined); }

void HalvoraAudienceController::leave() {
  if (now_.stage == AudienceStage::joined) setStage(AudienceStage::left);
}

void HalvoraAudienceController::stayOut() { setStage(AudienceStage::out); }

void HalvoraAudienceController::setStage(AudienceStage stage) {
  now_.stage = stage;
  if (!engineLife_.isGone()) {
    if (stage == AudienceStage::joined) {
      engine_.comeBack();
    } else {
      engine_.leave();
    }
  }
  look();
}

void HalvoraAudienceController::setGentle(bool isGentle) {
  if (isGentle == now_.isGentle) return;
  now_.isGentle = isGentle;
  platform_.defaults->set(kGentleKey, isGentle);
  platform_.defaults->synchronize();
  applyLimits();
  show();
}

void HalvoraAudienceController::applyLimits() {
  if (engineLife_.isGone()) return;
  LightLimits limits = now_.isGentle ? kGentleLight : LightLimits{};
  if (fields_.reducesFlashing) limits.flash = FlashPolicy::limited;
  engine_.setViewerLimits(limits);
}

// A show that is dropped because the venue was left keeps the whole screen.
bool HalvoraAudienceController::seesAShow() const {
  return now_.stage == AudienceStage::joined && !engineLife_.isGone() &&
         engine_.prefersStatusBarHidden() && engine_.isInsideVenue();
}

bool HalvoraAudienceController::seesALowBattery() const {
  const auto state = platform_.battery->state();
  return state && !state->isFed && state->level < kLowBattery;
}

void HalvoraAudienceController::look() {
  now_.isInShow = seesAShow();
  now_.isBatteryLow = seesALowBattery();
  show();
}

bool HalvoraAudienceController::isRightToLeft() const {
  return textFor("hv_layout_direction", "ltr") == "rtl";
}

std::string HalvoraAudienceController::textFor(const char* key, const char* fallback) const {
  return engineLife_.isGone() ? fallback : engine_.hvLocalizedStringForKey(key, fallback);
}

AudienceViews HalvoraAudienceController::viewsNow() const {
  const bool asks = now_.stage == AudienceStage::asked || now_.stage == AudienceStage::left;
  const Question& question = now_.stage == AudienceStage::left ? kAfterLeaving : kBeforeJoining;
  const LabelRow questions[] = {
      {&AudienceViews::title, 24, FontWeight::bold, question.title},
      {&AudienceViews::message, 16, FontWeight::regular, question.message}};
  AudienceViews views;
  const auto styleLabel = [&](const LabelRow& row) {
    StatusText& label = views.*row.label;
    label.text = textFor(row.words.key, row.words.fallback);
    label.font = {"", row.size, row.weight};
    label.colour = fields_.textColour;
    label.hidden = !asks;
  };
  for (const LabelRow& row : questions) styleLabel(row);
  for (const LabelRow& row : kLabels) styleLabel(row);
  views.batteryLabel.hidden = !asks || !now_.isBatteryLow;
  const auto styleButton = [&](const ButtonRow& row, bool isShown) {
    Button& button = views.*row.button;
    button.title = textFor(row.words.key, row.words.fallback);
    button.font = {"", kAudienceButtonSize, FontWeight::regular};
    button.height = kAudienceButtonHeight;
    button.cornerRadius = kAudienceCornerRadius;
    button.background = kQuietGround;
    button.hidden = !isShown;
  };
  styleButton({&AudienceViews::joinButton, question.join}, asks);
  styleButton(kStayOut, asks);
  styleButton(kLeaveTheLight, now_.isInShow);
  styleButton(kComeBack, now_.stage == AudienceStage::out);
  views.joinButton.background = fields_.actionButtonColour;
  views.joinButton.titleColour = fields_.actionButtonTitleColour;
  return views;
}

// Whoever hears of it may destroy this, and what it hears it by.
void HalvoraAudienceController::show() {
  AudienceViews views = viewsNow();
  if (views == views_ && now_ == told_) return;
  views_ = std::move(views);
  told_ = now_;
  const auto changed = changed_;
  if (changed) changed();
}

}  // namespace halvora
