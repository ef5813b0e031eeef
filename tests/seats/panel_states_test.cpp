// SPDX-License-Identifier: Apache-2.0
// Why nothing is seen of a show: each cause has words of its own, and only those that may mend by
// asking again offer to.
#include "seats/panel_states.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_storage.h"

namespace halvora {
namespace {

constexpr BluetoothAuthorization kAllowed = BluetoothAuthorization::allowedAlways;
constexpr CentralState kOn = CentralState::poweredOn;

struct PanelStates : testing::Test {
  std::string text(const PanelSituation& situation) const {
    return explanationOf(situation, kit).text;
  }
  bool canRetry(const PanelSituation& situation) const {
    return explanationOf(situation, kit).canRetry;
  }
  const VirtualBundle kit{"com.halvora.sdk"};
};

TEST_F(PanelStates, EachCauseHasWordsOfItsOwn) {
  const PanelSituation causes[] = {
      {kAllowed, CentralState::unsupported, false, false, false},
      {kAllowed, CentralState::poweredOff, false, false, false},
      {kAllowed, CentralState::unauthorised, false, false, false},
      {kAllowed, CentralState::unknown, false, false, false},
      {kAllowed, kOn, false, true, false},
      {kAllowed, kOn, false, false, false},
      {kAllowed, kOn, true, false, true},
  };
  std::set<std::string> texts;
  for (const PanelSituation& cause : causes) {
    EXPECT_FALSE(text(cause).empty());
    EXPECT_EQ(text(cause).find("hv_"), std::string::npos);
    texts.insert(text(cause));
  }
  EXPECT_EQ(texts.size(), std::size(causes));
}

TEST_F(PanelStates, NothingIsExplainedWhereAllIsWellOrNobodyWasAsked) {
  EXPECT_EQ(text({kAllowed, kOn, true, true, false}), "");
  EXPECT_EQ(
      text({BluetoothAuthorization::notDetermined, CentralState::unknown, false, false, true}), "");
}

TEST_F(PanelStates, ARefusalIsOneWhoeverTellsIt) {
  const std::string refused = text({BluetoothAuthorization::denied, kOn, false, false, false});
  EXPECT_EQ(text({BluetoothAuthorization::restricted, kOn, true, true, false}), refused);
  EXPECT_EQ(text({kAllowed, CentralState::unauthorised, false, false, false}), refused);
}

TEST_F(PanelStates, OnlyWhatMayMendOffersToBeTriedAgain) {
  EXPECT_TRUE(canRetry({kAllowed, CentralState::unknown, false, false, false}));
  EXPECT_TRUE(canRetry({kAllowed, CentralState::resetting, false, false, false}));
  EXPECT_TRUE(canRetry({kAllowed, kOn, true, false, true}));
  EXPECT_FALSE(canRetry({kAllowed, CentralState::poweredOff, false, false, true}));
  EXPECT_FALSE(canRetry({kAllowed, kOn, false, true, true}));
}

}  // namespace
}  // namespace halvora
