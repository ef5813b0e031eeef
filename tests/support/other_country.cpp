// SPDX-License-Identifier: Apache-2.0
#include "tests/support/other_country.h"

#include <clocale>
#include <cstdlib>

#include <stdlib.h>

#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {

namespace {

constexpr const char* kGerman = "de_DE.UTF-8";

class CommaNumbers final : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

// Machines rarely have other locales than their own, but most have what makes them.
bool makeGerman() {
  static const TemporaryFolder kFolder;
  const std::string made = kFolder.path() + "/" + kGerman;
  const std::string command = "localedef -i de_DE -f UTF-8 " + made + " >/dev/null 2>&1";
  if (std::system(command.c_str()) != 0) return false;  // NOLINT(bugprone-command-processor)
  setenv("LOCPATH", kFolder.path().c_str(), 1);
  return true;
}

bool liveInGermany() {
  if (std::setlocale(LC_ALL, kGerman) != nullptr) return true;
  static const bool kIsMade = makeGerman();
  return kIsMade && std::setlocale(LC_ALL, kGerman) != nullptr;
}

}  // namespace

OtherCountry::OtherCountry()
    : before_(std::locale::global(std::locale(std::locale::classic(), new CommaNumbers))),
      beforeInC_(std::setlocale(LC_ALL, nullptr)),
      isWhole_(liveInGermany()) {}

OtherCountry::~OtherCountry() {
  std::setlocale(LC_ALL, beforeInC_.c_str());
  std::locale::global(before_);
}

}  // namespace halvora
