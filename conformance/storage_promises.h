// SPDX-License-Identifier: Apache-2.0
// What files, defaults and bundles promise. Files are written below a folder that the caller gives
// and removes.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "conformance/promises.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/files.h"
#include "halvora/platform/user_defaults.h"

namespace halvora::conformance {

/// `folder` is there, empty and absolute.
std::vector<BrokenPromise> checkFiles(const std::function<std::unique_ptr<Files>()>& make,
                                      const std::string& folder);

/// Each call opens the same defaults anew, as an application does when it starts; what it answered
/// before is gone by then. They are empty at first.
std::vector<BrokenPromise> checkUserDefaults(
    const std::function<std::unique_ptr<UserDefaults>()>& open);

/// A bundle, and one thing that is known of it.
struct BundleUnderTest {
  std::unique_ptr<Bundle> bundle;  ///< Its texts may be of any language.
  /// A resource that it has, best one in a folder, and its bytes.
  std::string path;
  std::string bytes;  ///< At least one.
};

/// Resources, limits, texts that are missing.
std::vector<BrokenPromise> checkBundle(const std::function<BundleUnderTest()>& make);

}  // namespace halvora::conformance
