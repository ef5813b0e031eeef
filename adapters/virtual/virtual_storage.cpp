// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_storage.h"

#include <algorithm>

namespace halvora {

const DefaultsValue* VirtualDefaults::find(std::string_view key) const {
  const auto found = std::find_if(values_.begin(), values_.end(),
                                  [key](const auto& entry) { return entry.first == key; });
  return found == values_.end() ? nullptr : &found->second;
}

void VirtualDefaults::set(std::string_view key, DefaultsValue value) {
  if (log.isKept) log.add({std::string(key), value});
  setFromOutside(key, std::move(value));
}

void VirtualDefaults::remove(std::string_view key) {
  if (log.isKept) log.add({std::string(key), std::nullopt});
  setFromOutside(key, std::nullopt);
}

void VirtualDefaults::setFromOutside(std::string_view key, std::optional<DefaultsValue> value) {
  const auto found = std::find_if(values_.begin(), values_.end(),
                                  [key](const auto& entry) { return entry.first == key; });
  if (!value) {
    if (found == values_.end()) return;
    values_.erase(found);
  } else if (found == values_.end()) {
    values_.emplace_back(key, std::move(*value));
  } else {
    if (found->second == *value) return;
    found->second = std::move(*value);
  }
  ++changes;
}

std::optional<std::string> VirtualBundle::readResource(std::string_view path,
                                                       std::size_t limit) const {
  const auto found = resources.find(path);
  if (found == resources.end()) {
    return hasFolder() ? files->read(location(path), limit) : std::nullopt;
  }
  if (found->second.size() > limit) return std::nullopt;
  return found->second;
}

std::optional<FileAttributes> VirtualBundle::attributes(std::string_view path) const {
  const auto found = resources.find(path);
  if (found != resources.end()) return FileAttributes{.size = found->second.size()};
  return hasFolder() ? files->attributes(location(path)) : std::nullopt;
}

std::optional<std::vector<std::string>> VirtualBundle::list(std::string_view name) const {
  return hasFolder() ? files->list(location(name)) : std::nullopt;
}

std::string VirtualBundle::location(std::string_view path) const {
  return folder.empty() ? std::string() : folder + "/" + std::string(path);
}

std::string VirtualBundle::localizedString(std::string_view key) const {
  const auto found = strings.find(key);
  return found == strings.end() ? std::string(key) : found->second;
}

}  // namespace halvora
