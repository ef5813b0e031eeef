// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/light_journal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace halvora {

namespace {

constexpr std::size_t kMostBytes = 4096;
constexpr mode_t kOwnerAlone = 0600;

}  // namespace

LightJournal::LightJournal(const std::string& path)
    : file_(
          open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kOwnerAlone)) {
  if (!isHeld()) return;
  if (flock(file_, LOCK_EX | LOCK_NB) == 0) {
    read();
  } else {
    release();
  }
}

LightJournal::~LightJournal() { release(); }

void LightJournal::read() {
  std::array<char, kMostBytes> bytes;
  const ssize_t size = pread(file_, bytes.data(), bytes.size(), 0);
  // A longer one is none of ours.
  if (size <= 0 || static_cast<std::size_t>(size) == bytes.size()) return;
  std::string_view text(bytes.data(), static_cast<std::size_t>(size));
  for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos;) {
    take(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
}

// "backlight panel 30"; what does not read so is left out.
void LightJournal::take(std::string_view line) {
  const std::size_t first = line.find(' ');
  const std::size_t last = line.rfind(' ');
  if (first == std::string_view::npos || first == last || entries_.size() == kMostEntries) return;
  std::uint32_t level = 0;
  const auto [end, error] =
      std::from_chars(line.data() + last + 1, line.data() + line.size(), level);
  if (error != std::errc() || end != line.data() + line.size()) return;
  entries_.push_back({std::string(line.substr(0, first)),
                      std::string(line.substr(first + 1, last - first - 1)), level});
}

std::vector<LightJournal::Entry>::const_iterator LightJournal::find(const SysfsLight& light) const {
  return std::ranges::find_if(entries_, [&](const Entry& entry) {
    return entry.subsystem == light.subsystem && entry.name == light.name;
  });
}

std::optional<std::uint32_t> LightJournal::owed(const SysfsLight& light) const {
  const auto entry = find(light);
  if (entry == entries_.end()) return std::nullopt;
  return std::min(entry->level, light.most);
}

void LightJournal::note(const SysfsLight& light, std::uint32_t level) {
  const auto entry = find(light);
  if (entry != entries_.end() && entry->level == level) return;
  if (entry != entries_.end()) entries_.erase(entry);
  if (entries_.size() == kMostEntries) return;
  entries_.push_back({light.subsystem, light.name, level});
  write();
}

void LightJournal::forget(const SysfsLight& light) {
  const auto entry = find(light);
  if (entry == entries_.end()) return;
  entries_.erase(entry);
  write();
}

// Not synchronised with the disk: it is to outlive the process, not the machine. The lines first
// and then the end, so that whoever dies between them leaves lines too many and none too few. A
// file that takes no more is none.
void LightJournal::write() {
  if (!isHeld()) return;
  std::string text;
  for (const Entry& entry : entries_) {
    text.append(entry.subsystem).append(" ").append(entry.name).append(" ");
    text.append(std::to_string(entry.level)).append("\n");
  }
  const auto size = static_cast<ssize_t>(text.size());
  if (pwrite(file_, text.data(), text.size(), 0) != size || ftruncate(file_, size) != 0) release();
}

void LightJournal::release() {
  if (isHeld()) close(std::exchange(file_, -1));
}

}  // namespace halvora
