// SPDX-License-Identifier: Apache-2.0
// The pictures that an engine's light names, read as the engine reads them to judge them: out of
// the host's bundle, wherever that has them, or a folder of the phone. A value that may be copied;
// any thread.
#pragma once

#include <optional>
#include <string>

#include "halvora/platform/bundle.h"
#include "halvora/platform/files.h"
#include "halvora/platform/image.h"
#include "halvora/platform/need.h"
#include "halvora/platform/platform.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// Reads what `DisplayItem::text` of an image names.
class Pictures {
 public:
  /// Of the engine on that platform, whose needs must outlive this.
  explicit Pictures(const Platform& platform);
  /// With nothing of a platform but what pictures take; the three must outlive this.
  Pictures(const Files& files, const Bundle& bundle, const ImageDecoder& decoder)
      : files_(files), bundle_(bundle), decoder_(decoder) {}

  /// The encoded bytes; none for what is missing, unreadable or larger than 64 MiB. Reads a file.
  std::optional<std::string> bytes(const std::string& name) const;
  /// The pixels of such bytes; none also for what the phone's decoder does not take for a picture.
  /// Throws std::bad_alloc where memory is short.
  std::optional<Image> read(const std::string& name) const;

 private:
  NeedRef<const Files> files_;
  NeedRef<const Bundle> bundle_;
  NeedRef<const ImageDecoder> decoder_;
};

}  // namespace v0
}  // namespace halvora
