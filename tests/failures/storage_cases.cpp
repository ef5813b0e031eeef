// SPDX-License-Identifier: Apache-2.0
// Defaults in a file: read at the start, saved, and saved again after a failure; folders that are
// listed and removed.
#include <cerrno>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/image/picture_decoder.h"
#include "adapters/json/exact_json_reader.h"
#include "adapters/linux/linux_files.h"
#include "adapters/standard/file_defaults.h"
#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "tests/failures/faults.h"
#include "tests/failures/trial.h"
#include "tests/support/source_tree.h"
#include "text/defaults_values.h"

namespace halvora {

namespace {

const ExactJsonReader kJson;

/// A process's defaults and what they need, without threads.
struct DefaultsRoom {
  explicit DefaultsRoom(const std::string& path) : defaults(path, {files, kJson, loop, queues}) {}
  LinuxFiles files;
  VirtualRunLoop loop;
  VirtualQueues queues{loop};
  FileDefaults defaults;
};

std::string textOf(std::int64_t number) {
  return std::string(3000, static_cast<char>('a' + number % 26));
}

void write(FileDefaults& defaults, std::int64_t number) {
  defaults.set("first", number);
  defaults.set("text", textOf(number));
  defaults.set("zLast", number);
}

/// Which state is stored; none where it is neither.
std::optional<std::int64_t> stateOf(const std::string& path) {
  const DefaultsRoom room(path);
  const std::int64_t number = integerForKey(room.defaults, "first");
  if (integerForKey(room.defaults, "zLast") != number) return std::nullopt;
  if (number > 0 && textForKey(room.defaults, "text") != textOf(number)) return std::nullopt;
  return number;
}

class DefaultsTrial : public Trial {
 protected:
  explicit DefaultsTrial(const std::string& folder) : path_(folder + "/sub/defaults.json") {
    DefaultsRoom room(path_);
    write(room.defaults, 1);
  }

  const std::string path_;
};

class DefaultsLoad final : public DefaultsTrial {
 public:
  explicit DefaultsLoad(const std::string& folder) : DefaultsTrial(folder) {}

  // A start without memory is an exception for whoever makes the defaults.
  void act() override {
    try {
      const DefaultsRoom room(path_);
      number_ = integerForKey(room.defaults, "first");
    } catch (const std::bad_alloc&) {
      number_ = -1;
    }
  }

  Verdict judge() override {
    if (stateOf(path_) != 1 && stateOf(path_ + ".damaged") != 1) {
      return wrong("what was stored is lost");
    }
    return number_ == 1 ? whole() : refused();
  }

 private:
  std::int64_t number_ = 0;
};

class DefaultsSave final : public DefaultsTrial {
 public:
  explicit DefaultsSave(const std::string& folder)
      : DefaultsTrial(folder), room_(std::make_unique<DefaultsRoom>(path_)) {}

  void act() override {
    room_->loop.actAt(room_->loop.now(), [this] {
      try {
        write(room_->defaults, 2);
        room_->defaults.synchronize();
      } catch (const std::bad_alloc&) {
        isRefused_ = true;
      }
    });
  }

  Verdict judge() override {
    const auto stored = stateOf(path_);
    if (!stored || *stored < 1 || *stored > 2) return wrong("a mixture is stored");
    if (stored == 2 && isKeptFromMedium()) return wrong("what is on no medium is put in place");
    if (stored == 2) isRefused_ = false;
    // The next save, a second later, and the end of the process bring it in.
    write(room_->defaults, 3);
    room_.reset();
    if (stateOf(path_) != 3) return wrong("nothing can be saved afterwards");
    return isRefused_ || stored == 1 ? refused() : whole();
  }

 private:
  /// The first sync of all is that of the file's bytes.
  static bool isKeptFromMedium() {
    const faults::Plan& plan = faults::plan();
    return plan.kind != nullptr && plan.kind->call == faults::Call::sync && plan.first == 1 &&
           plan.kind->error != EINTR;
  }

  std::unique_ptr<DefaultsRoom> room_;
  bool isRefused_ = false;
};

/// Tables of a venue whose map has changed: looked through, and removed with their folder.
class FolderRemoval final : public Trial {
 public:
  explicit FolderRemoval(const std::string& folder) : folder_(folder + "/tables"), names_(fill()) {}

  void act() override {
    try {
      listed_ = files_.list(folder_);
      files_.removeLeftovers(folder_ + "/");
    } catch (const std::bad_alloc&) {
      isRefused_ = true;
    }
    try {
      files_.removeFolder(folder_);
    } catch (const std::bad_alloc&) {
      isRefused_ = true;
    }
  }

  Verdict judge() override {
    if (listed_ && *listed_ != names_) return wrong("another list");
    const bool isGone = !files_.attributes(folder_);
    files_.removeFolder(folder_);
    if (files_.attributes(folder_)) return wrong("it cannot be removed afterwards");
    return isGone && listed_ && !isRefused_ ? whole() : refused();
  }

 private:
  std::vector<std::string> fill() {
    const std::string within = folder_ + "/a name that is longer than small strings are";
    files_.makeFolder(within);
    files_.replace(within + "/table.bin", "table");
    files_.replace(folder_ + "/table.bin", "table");
    return files_.list(folder_).value_or(std::vector<std::string>());
  }

  LinuxFiles files_;
  const std::string folder_;
  const std::vector<std::string> names_;
  std::optional<std::vector<std::string>> listed_;
  bool isRefused_ = false;
};

/// A picture of the demo's own assets, as a still or a gobo is.
template <const char* kName>
class Picture final : public Trial {
 public:
  explicit Picture(const std::string& /*folder*/)
      : bytes_(readFile(sourceTree() + kName, std::size_t{1} << 26).value_or("")) {}

  void act() override {
    try {
      image_ = kDecoder.decode(bytes_);
    } catch (const std::bad_alloc&) {
      image_.reset();
    }
  }
  Verdict judge() override {
    const std::optional<Image> right = kDecoder.decode(bytes_);
    if (!right) return wrong("it cannot be decoded afterwards");
    if (!image_) return refused();
    return image_->rgba == right->rgba ? whole() : wrong("another picture");
  }

 private:
  static inline const PictureDecoder kDecoder;
  const std::string bytes_;
  std::optional<Image> image_;
};

constexpr char kPng[] = "/assets/demo/HVAssets/Gobos/1.png";
constexpr char kJpeg[] = "/assets/demo/HVAssets/Maps/Venue-7/1/f1.jpg";

template <class Made>
std::unique_ptr<Trial> make(const std::string& folder) {
  return std::make_unique<Made>(folder);
}

constexpr FailureCase kCases[] = {
    {"defaults-load", {.files = true}, make<DefaultsLoad>},
    {"defaults-save", {.files = true}, make<DefaultsSave>},
    {"folder-removal", {.files = true}, make<FolderRemoval>},
    {"picture-png", {}, make<Picture<kPng>>},
    {"picture-jpeg", {}, make<Picture<kJpeg>>, 168},
};

}  // namespace

std::span<const FailureCase> storageCases() { return kCases; }

}  // namespace halvora
