// SPDX-License-Identifier: Apache-2.0
// Any bytes as the names in a gobo folder, one a line after the gobo's number: a gobo that is shown
// is a file of that folder, and the names alone give the same answer as before.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

#include <stdlib.h>

#include "adapters/standard/standard_files.h"
#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "halvora/platform/absent.h"
#include "light/gobo_animator.h"
#include "light/view_stack.h"
#include "tests/fuzz/fuzz_targets.h"

namespace halvora {

namespace {

constexpr std::size_t kMostNames = 20;

const std::string& folder() {
  static const std::string kFolder = [] {
    std::string name = (std::filesystem::temp_directory_path() / "halvora-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) std::abort();
    static const std::string kKept = name;
    std::atexit([] {
      std::error_code ignored;
      std::filesystem::remove_all(kKept, ignored);
    });
    return name;
  }();
  return kFolder;
}

// Names that no file can have are left out by the system.
void fill(std::string_view names) {
  std::error_code ignored;
  std::filesystem::remove_all(folder(), ignored);
  std::filesystem::create_directory(folder(), ignored);
  for (std::size_t count = 0; count < kMostNames && !names.empty(); ++count) {
    const std::string name(names.substr(0, names.find('\n')));
    names.remove_prefix(std::min(name.size() + 1, names.size()));
    const bool isName = !name.empty() && name.find('/') == std::string::npos &&
                        name.find('\0') == std::string::npos && name != "." && name != "..";
    if (isName) std::ofstream(folder() + "/" + name).flush();
  }
}

}  // namespace

int fuzzGobos(FuzzBytes bytes) {
  FuzzInput input(bytes);
  const int number = input.byte() % 12;
  const std::string_view names = textOf(input.rest());
  const auto said = variantsNamedBy(names, number);
  require(!said || names.starts_with(std::to_string(number) + "_1"), "variants are a gobo's own");

  fill(names);
  VirtualRunLoop loop;
  TimerSet timers(loop);
  ViewStack views(timers);
  ScriptedRandom random(ScriptedRandom::Rule::greatest);
  GoboState state;
  const StandardFiles files;
  GoboAnimator gobo(state, views, files, absent::bundles().main, random);
  state.currentGobo = number;
  gobo.build(std::make_shared<const std::string>(folder()));
  for (int change = 0; change < 3; ++change) {
    gobo.changeGobo();
    const std::string& shown = views.text(ViewId::goboImage);
    if (shown.empty()) continue;
    require(shown.starts_with(folder() + "/" + std::to_string(number)), "a gobo is of its number");
    require(std::filesystem::is_regular_file(shown), "a gobo is a file");
  }
  return 0;
}

}  // namespace halvora
