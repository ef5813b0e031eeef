// SPDX-License-Identifier: Apache-2.0
// The yardstick of the trace tests, measured itself.
#include "tests/venue/show/trace_lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(TraceLines, OrderWithinATimeAndFurtherKeysDoNotMatter) {
  EXPECT_THAT(
      differences("{\"t\":1,\"a\":1}\n{\"t\":1,\"b\":[2,3]}\n{\"t\":2,\"a\":1}\n",
                  "{\"t\":1,\"b\":[2.0,3],\"c\":0}\n{\"t\":1,\"a\":1}\n{\"t\":2,\"a\":1}\n"),
      IsEmpty());
}

TEST(TraceLines, EveryDifferenceIsFound) {
  EXPECT_THAT(differences("{\"t\":1,\"a\":1}\n", ""), ElementsAre("missing     {\"t\":1,\"a\":1}"));
  EXPECT_THAT(differences("", "{\"t\":1,\"a\":1}\n"), ElementsAre("unexpected  {\"t\":1,\"a\":1}"));
  EXPECT_THAT(differences("{\"t\":1,\"a\":1}\n", "{\"t\":2,\"a\":1}\n"), SizeIs(2));
  EXPECT_THAT(differences("{\"t\":1,\"a\":1}\n", "{\"t\":1,\"a\":1}\n{\"t\":1,\"a\":1}\n"),
              SizeIs(1));
  EXPECT_THAT(differences("{\"t\":1,\"a\":1}\n", "{\"t\":1,\"a\":1.0001}\n"), SizeIs(2));
  EXPECT_THAT(differences("{\"t\":1,\"a\":null}\n", "{\"t\":1}\n"), SizeIs(2));
}

TEST(TraceLines, OnlyTheHostOfARequestIsFree) {
  EXPECT_THAT(differences("{\"t\":1,\"get\":\"*/?x\"}\n", "{\"t\":1,\"get\":\"https://a/?x\"}\n"),
              IsEmpty());
  EXPECT_THAT(differences("{\"t\":1,\"get\":\"*/?x\"}\n", "{\"t\":1,\"get\":\"https://a/?y\"}\n"),
              SizeIs(2));
  EXPECT_THAT(differences("{\"t\":1,\"b\":\"*\"}\n", "{\"t\":1,\"b\":\"c\"}\n"), SizeIs(2));
}

TEST(TraceLines, FlawsAreFound) {
  EXPECT_THAT(flawsOfTrace("{\"t\":1,\"torch\":true}\n{\"t\":1,\"light\":null}\n"), IsEmpty());
  EXPECT_THAT(flawsOfTrace("{\"t\":2,\"torch\":true}\n{\"t\":1,\"torch\":false}\n"), SizeIs(1));
  EXPECT_THAT(flawsOfTrace("{\"torch\":true,\"t\":1}\n"), SizeIs(1));
  EXPECT_THAT(flawsOfTrace("{\"t\":1.5,\"torch\":true}\n"), SizeIs(1));
  EXPECT_THAT(flawsOfTrace("{\"t\":1,\"lamp\":true}\n"), SizeIs(1));
  EXPECT_THAT(flawsOfTrace("{\"t\":1,\"torch\":true}\n\n"), SizeIs(1));
  EXPECT_THAT(flawsOfTrace("{\"t\":1,\"torch\":true}"), SizeIs(1));
}

}  // namespace
}  // namespace halvora
