// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/standard_files.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <ios>
#include <new>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>

#include "adapters/standard/file_names.h"

namespace halvora {

namespace {

namespace fs = std::filesystem;

// Beside the file, so that renaming never crosses file systems; of its own for every writer.
std::string temporaryName(const std::string& path) {
  static std::atomic<std::uint64_t> count{0};
  std::random_device chance;
  const std::uint64_t number =
      ((std::uint64_t{chance()} << 32) | chance()) + count.fetch_add(1, std::memory_order_relaxed);
  return path + ".being-written-" + std::to_string(number);
}

bool writeAll(const std::string& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  // Only closing says whether the disk had room for the last of it.
  file.close();
  return file.good();
}

// A library that cannot convert to the system's time counts in it.
template <class Time, class Clock = typename Time::clock>
auto since1970(Time time) {
  if constexpr (requires { Clock::to_sys(time); }) {
    return Clock::to_sys(time).time_since_epoch();
  } else {
    return time.time_since_epoch();
  }
}

// To libc++ an error is the end of the file; what the system said is known only to `errno`.
#ifdef _LIBCPP_VERSION
constexpr bool kStreamsSeeErrors = false;
#else
constexpr bool kStreamsSeeErrors = true;
#endif

}  // namespace

std::optional<std::string> readFile(const std::string& path, std::size_t limit) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return std::nullopt;
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    // A file that is there must not be taken for one that is not.
    if (errno == ENOMEM) throw std::bad_alloc();
    return std::nullopt;
  }
  // What is read decides, not the size the file claimed before: it may be growing.
  std::string bytes;
  char block[1 << 14];
  while (errno = 0, file.read(block, sizeof block), file.gcount() > 0) {
    bytes.append(block, static_cast<std::size_t>(file.gcount()));
    if (bytes.size() > limit) return std::nullopt;
  }
  if (file.bad() || (!kStreamsSeeErrors && errno != 0)) return std::nullopt;
  return bytes;
}

std::optional<FileAttributes> StandardFiles::attributes(const std::string& path) const {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  const bool isFile = fs::is_regular_file(status);
  if (!isFile && !fs::is_directory(status)) return std::nullopt;
  FileAttributes attributes{.isFolder = !isFile};
  if (isFile) {
    attributes.size = fs::file_size(path, error);
    if (error) return std::nullopt;
  }
  const fs::file_time_type time = fs::last_write_time(path, error);
  if (error) return std::nullopt;
  attributes.modifiedAt = std::chrono::duration<double>(since1970(time)).count();
  return attributes;
}

std::optional<std::vector<std::string>> StandardFiles::list(const std::string& folder) const {
  std::error_code error;
  std::vector<std::string> names;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator() && names.size() < kMostEntries;
       entry.increment(error)) {
    names.push_back(entry->path().filename().string());
  }
  if (error) return std::nullopt;
  std::sort(names.begin(), names.end(), isListedBefore);
  return names;
}

bool StandardFiles::replace(const std::string& path, std::string_view bytes) {
  std::string temporary;
  try {
    temporary = temporaryName(path);
  } catch (const std::runtime_error&) {
    return false;  // Systems may be out of chance.
  }
  std::error_code error;
  if (writeAll(temporary, bytes)) {
    fs::rename(temporary, path, error);
    if (!error) return true;
  }
  fs::remove(temporary, error);
  return false;
}

bool StandardFiles::makeFolder(const std::string& path) {
  std::error_code error;
  fs::create_directories(path, error);
  return fs::is_directory(path, error);
}

bool StandardFiles::move(const std::string& from, const std::string& to) {
  std::error_code error;
  fs::rename(from, to, error);
  return !error;
}

void StandardFiles::removeFolder(const std::string& path) {
  std::error_code error;
  fs::remove_all(path, error);
}

}  // namespace halvora
