// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_files.h"

#include <algorithm>
#include <utility>

#include "adapters/standard/file_names.h"

namespace halvora {

namespace {

template <class Paths>
void addNamesWithin(const std::string& folder, const Paths& paths, std::set<std::string>& names) {
  const std::string within = folder + "/";
  for (auto at = paths.lower_bound(within); at != paths.end(); ++at) {
    const std::string* path = nullptr;
    if constexpr (requires { at->first; }) {
      path = &at->first;
    } else {
      path = &*at;
    }
    if (!path->starts_with(within)) break;
    const std::string_view rest = std::string_view(*path).substr(within.size());
    names.emplace(rest.substr(0, rest.find('/')));
  }
}

}  // namespace

std::optional<FileAttributes> VirtualFiles::attributes(const std::string& path) const {
  const std::lock_guard lock(mutex_);
  if (folders_.contains(path)) return FileAttributes{.isFolder = true};
  const auto found = files_.find(path);
  if (found == files_.end()) return std::nullopt;
  return FileAttributes{.size = found->second.bytes.size(), .modifiedAt = found->second.modifiedAt};
}

std::optional<std::vector<std::string>> VirtualFiles::list(const std::string& folder) const {
  const std::lock_guard lock(mutex_);
  if (!folders_.contains(folder)) return std::nullopt;
  std::set<std::string> names;
  addNamesWithin(folder, files_, names);
  addNamesWithin(folder, folders_, names);
  std::vector<std::string> sorted(names.begin(), names.end());
  std::sort(sorted.begin(), sorted.end(), isListedBefore);
  return sorted;
}

std::optional<std::string> VirtualFiles::read(const std::string& path, std::size_t limit) const {
  const std::lock_guard lock(mutex_);
  reads.add(path);
  const auto found = files_.find(path);
  if (found == files_.end() || found->second.bytes.size() > limit) return std::nullopt;
  return found->second.bytes;
}

bool VirtualFiles::replace(const std::string& path, std::string_view bytes) {
  const std::lock_guard lock(mutex_);
  if (isFull || isReadOnly || !folders_.contains(path.substr(0, path.rfind('/')))) return false;
  writes.add(path);
  files_[path] = {std::string(bytes), now};
  return true;
}

void VirtualFiles::removeLeftovers(const std::string& beginning) {
  const std::lock_guard lock(mutex_);
  if (isReadOnly) return;
  const std::size_t name = beginning.rfind('/') + 1;
  std::erase_if(files_, [&](const auto& file) {
    return file.first.starts_with(beginning) && isLeftover(file.first) &&
           file.first.find('/', name) == std::string::npos;
  });
}

bool VirtualFiles::makeFolder(const std::string& path) {
  const std::lock_guard lock(mutex_);
  if (folders_.contains(path)) return true;
  if (isReadOnly) return false;
  makeFoldersAbove(path + "/");
  return true;
}

bool VirtualFiles::move(const std::string& from, const std::string& to) {
  const std::lock_guard lock(mutex_);
  const bool hasFolder = folders_.contains(to.substr(0, to.rfind('/')));
  if (isReadOnly || !hasFolder || !files_.contains(from)) return false;
  File file = std::move(files_[from]);
  files_.erase(from);
  files_[to] = std::move(file);
  return true;
}

void VirtualFiles::removeFolder(const std::string& path) {
  const std::lock_guard lock(mutex_);
  if (isReadOnly) return;
  const auto isWithin = [&path](const std::string& other) {
    return other == path || other.starts_with(path + "/");
  };
  std::erase_if(files_, [&](const auto& file) { return isWithin(file.first); });
  std::erase_if(folders_, isWithin);
}

void VirtualFiles::put(const std::string& path, std::string bytes, double modifiedAt) {
  const std::lock_guard lock(mutex_);
  makeFoldersAbove(path);
  files_[path] = {std::move(bytes), modifiedAt};
}

void VirtualFiles::remove(const std::string& path) {
  const std::lock_guard lock(mutex_);
  files_.erase(path);
}

void VirtualFiles::touch(const std::string& path, double modifiedAt) {
  const std::lock_guard lock(mutex_);
  if (const auto found = files_.find(path); found != files_.end()) {
    found->second.modifiedAt = modifiedAt;
  }
}

void VirtualFiles::makeFoldersAbove(const std::string& path) {
  for (std::size_t at = path.find('/', 1); at != std::string::npos; at = path.find('/', at + 1)) {
    folders_.insert(path.substr(0, at));
  }
}

}  // namespace halvora
