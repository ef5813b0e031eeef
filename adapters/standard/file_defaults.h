// SPDX-License-Identifier: Apache-2.0
// User defaults that last, in one file: read once at the start, then served from memory. What is
// written is saved off the main thread, on request at once and otherwise soon, always the whole
// file in place of the old one, so that a process that dies, or a phone that loses its power,
// leaves the old or the new values. What could not be saved is tried again, ever more rarely. Owned
// by the host; main thread.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "adapters/standard/defaults_document.h"
#include "halvora/platform/files.h"
#include "halvora/platform/json.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/serial_queues.h"
#include "halvora/platform/user_defaults.h"

namespace halvora {

class FileDefaults final : public UserDefaults {
 public:
  /// A larger file counts as damaged.
  static constexpr std::size_t kLargestFile = std::size_t{64} << 20;
  /// How long a write that nobody asks to be made lasting waits for others to come.
  static constexpr Duration kSaveDelay = milliseconds(1000);
  /// A save that failed is tried again after a second, then two, four, up to this.
  static constexpr Duration kLongestRetry = milliseconds(60'000);

  struct Needs {
    Files& files;
    const JsonReader& json;
    RunLoop& runLoop;
    SerialQueues& queues;
  };

  /// The path is absolute; folders above it are made when something is saved. A file that is
  /// damaged is kept beside it as "PATH.damaged", and what can be understood of it counts.
  FileDefaults(const std::string& path, const Needs& needs);
  /// Saves what is not saved yet, and waits for it.
  ~FileDefaults() override;
  FileDefaults(const FileDefaults&) = delete;
  FileDefaults& operator=(const FileDefaults&) = delete;

  const DefaultsValue* find(std::string_view key) const override;
  void set(std::string_view key, DefaultsValue value) override;
  void remove(std::string_view key) override;
  /// While saving fails, it waits for the next attempt like everything else.
  void synchronize() override;

  /// How many saves have failed so far.
  std::uint64_t failedSaves() const { return failedSaves_; }

 private:
  class Saver;

  void load(const std::string& path, const Needs& needs);
  void changed();
  void save();
  void saveFailed();

  DefaultsValues values_;
  bool isChanged_ = false;
  std::uint64_t failedSaves_ = 0;
  RunLoop& runLoop_;
  Timer saveTimer_;
  /// What background jobs may reach, and only through weak references.
  std::shared_ptr<Saver> saver_;
  std::unique_ptr<SerialQueue> queue_;
};

}  // namespace halvora
