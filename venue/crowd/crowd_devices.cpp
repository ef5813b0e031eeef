// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/crowd_devices.h"

#include <algorithm>
#include <type_traits>
#include <utility>

#include "adapters/standard/radio_manager.h"
#include "text/seat_defaults.h"

namespace halvora {

namespace {

template <class Value>
constexpr bool isNumber = std::is_same_v<Value, bool> || std::is_same_v<Value, std::int64_t> ||
                          std::is_same_v<Value, double> || std::is_same_v<Value, Date>;

}  // namespace

SharedDefaults::Key& SharedDefaults::key(std::string_view name) {
  const auto found =
      std::ranges::find_if(keys_, [name](const Key& known) { return known.name == name; });
  return found != keys_.end() ? *found : keys_.emplace_back(Key{std::string(name), {}});
}

const DefaultsValue& SharedDefaults::value(DefaultsValue value) {
  if (const auto* text = std::get_if<std::string>(&value.storage)) {
    return texts_.try_emplace(*text, *text).first->second;
  }
  const auto found = std::ranges::find(others_, value);
  return found != others_.end() ? *found : others_.emplace_back(std::move(value));
}

const DefaultsValue* CrowdDefaults::find(std::string_view key) const {
  if (const auto entry = entryOf(key); entry != entries_.end()) {
    if (const auto* const shared = std::get_if<const DefaultsValue*>(&entry->value)) {
      return *shared;
    }
    DefaultsValue& unpacked = entry->key->unpacked;
    std::visit(
        [&unpacked](const auto& number) {
          if constexpr (isNumber<std::decay_t<decltype(number)>>) unpacked.storage = number;
        },
        entry->value);
    return &unpacked;
  }
  if (key == kXPosKey) return &(shared_.xPos = seat_.at.x);
  if (key == kYPosKey) return &(shared_.yPos = seat_.at.y);
  if (key == kSelectedSectionKey) return &section_;
  return nullptr;
}

void CrowdDefaults::set(std::string_view key, DefaultsValue value) {
  const Packed packed = std::visit(
      [this](auto&& storage) -> Packed {
        if constexpr (isNumber<std::decay_t<decltype(storage)>>) {
          return storage;
        } else {
          return &shared_.value(std::forward<decltype(storage)>(storage));
        }
      },
      std::move(value.storage));
  if (const auto entry = entryOf(key); entry != entries_.end()) {
    entries_[static_cast<std::size_t>(entry - entries_.begin())].value = packed;
  } else {
    // Not a place more than is needed: the engine has a handful of keys.
    entries_.reserve(entries_.size() + 1);
    entries_.push_back({&shared_.key(key), packed});
  }
}

void CrowdDefaults::remove(std::string_view key) {
  if (const auto entry = entryOf(key); entry != entries_.end()) entries_.erase(entry);
}

std::vector<CrowdDefaults::Entry>::const_iterator CrowdDefaults::entryOf(
    std::string_view key) const {
  return std::ranges::find_if(entries_,
                              [key](const Entry& entry) { return entry.key->name == key; });
}

class CrowdRadio::Manager final : public RadioManager {
 public:
  Manager(CrowdRadio& radio, CentralManagerDelegate& delegate)
      : RadioManager(radio.loop_, delegate), radio_(radio) {
    radio_.manager_ = this;
  }
  ~Manager() override {
    if (radio_.manager_ == this) radio_.manager_ = nullptr;
  }

  CentralState state() const override { return radio_.state_; }

 private:
  CrowdRadio& radio_;
};

std::unique_ptr<CentralManager> CrowdRadio::makeManager(CentralManagerDelegate& delegate) {
  return std::make_unique<Manager>(*this, delegate);
}

void CrowdRadio::setState(CentralState state) {
  if (state == state_) return;
  state_ = state;
  if (manager_ != nullptr) manager_->stateChanged(state);
}

void CrowdRadio::advertise(std::span<const std::uint8_t> manufacturerData) {
  if (isScanning()) manager_->delegate().didDiscoverPeripheral({manufacturerData});
}

bool CrowdRadio::isScanning() const { return manager_ != nullptr && manager_->isScanning(); }

}  // namespace halvora
