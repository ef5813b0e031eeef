// SPDX-License-Identifier: Apache-2.0
// User defaults and bundles in memory. Single-threaded, but for what a bundle's resources are.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/virtual/log.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/files.h"
#include "halvora/platform/user_defaults.h"

namespace halvora {

class VirtualDefaults final : public UserDefaults {
 public:
  /// One write by the kit; no value where the key was removed.
  struct Write {
    std::string key;
    std::optional<DefaultsValue> value;
  };

  const DefaultsValue* find(std::string_view key) const override;
  void set(std::string_view key, DefaultsValue value) override;
  void remove(std::string_view key) override;
  void synchronize() override { ++synchronisations; }

  /// Somebody else's write: no value removes the key. Not in the log.
  void setFromOutside(std::string_view key, std::optional<DefaultsValue> value);

  Log<Write> log;
  /// How often a write really changed something.
  std::uint64_t changes = 0;
  std::uint64_t synchronisations = 0;

 private:
  /// Few enough to be looked through.
  std::vector<std::pair<std::string, DefaultsValue>> values_;
};

class VirtualBundle : public Bundle {
 public:
  explicit VirtualBundle(std::string identifier) : identifier_(std::move(identifier)) {}
  const std::string& identifier() const override { return identifier_; }
  std::optional<FileAttributes> attributes(std::string_view path) const override;
  std::optional<std::vector<std::string>> list(std::string_view name) const override;
  std::optional<std::string> readResource(std::string_view path, std::size_t limit) const override;
  std::string location(std::string_view path) const override;
  std::string localizedString(std::string_view key) const override;

  /// Resources that are not in memory lie in this folder of these files; none or empty for nowhere.
  const Files* files = nullptr;
  std::string folder;
  std::map<std::string, std::string, std::less<>> resources;
  std::map<std::string, std::string, std::less<>> strings;

 private:
  bool hasFolder() const { return files != nullptr && !folder.empty(); }

  std::string identifier_;
};

}  // namespace halvora
