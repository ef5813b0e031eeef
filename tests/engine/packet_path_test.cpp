// SPDX-License-Identifier: Apache-2.0
#include <new>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/engine/engine_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using B = Broadcast;

std::vector<std::uint8_t> bytesOf(const Broadcast& broadcast) {
  const BroadcastBytes data = encodeBroadcast(broadcast);
  return {data.begin(), data.end()};
}

Broadcast numbered(int sequence, int mode = 1) { return look(mode, {{&B::sequence, sequence}}); }

Broadcast fromVenueWide(int sequence, int mode = 1) {
  return look(mode, {{&B::sequence, sequence}, {&B::transmitter, 255}});
}

class PacketPath : public testing::Test {
 protected:
  PacketPath() { bench_.listen(); }

  const PresenceState& presence() const { return bench_.presence(); }
  void allow(std::vector<std::string> ids) {
    bench_.engine().setAllowedTransmitterIds(std::move(ids));
  }
  /// Makes that number the current sequence.
  void reach(int sequence) {
    ASSERT_EQ(bench_.hear(numbered(sequence, 1)), PacketFate::processed);
    ASSERT_EQ(presence().currentSequence, sequence);
  }

  EngineBench bench_;
};

TEST_F(PacketPath, EveryAdvertisementIsCounted) {
  bench_.hear(Advertisement{});
  bench_.hear(std::vector<std::uint8_t>{0x4C, 0x00, 0x02});
  bench_.hear(std::vector<std::uint8_t>{0x09, 0xC9});
  bench_.hear(numbered(1));
  bench_.hear(numbered(1));
  EXPECT_EQ(presence().broadcastCount, 5);
  EXPECT_EQ(presence().fps, 2);
  EXPECT_EQ(presence().activeFPS, 1);
}

TEST_F(PacketPath, NothingButTheCounterMovesForOtherAdvertisements) {
  EXPECT_EQ(bench_.hear(Advertisement{}), PacketFate::noManufacturerData);
  EXPECT_EQ(bench_.hear(std::vector<std::uint8_t>{}), PacketFate::otherMaker);
  std::vector<std::uint8_t> data = bytesOf(numbered(1));
  data[1] = 0xC8;
  EXPECT_EQ(bench_.hear(data), PacketFate::otherMaker);
  EXPECT_EQ(presence().broadcastCount, 3);
  EXPECT_FALSE(presence().transmitterFound);
  EXPECT_FALSE(presence().insideVenue);
  EXPECT_EQ(presence().fps, 0);
  EXPECT_EQ(presence().liveSequence, 0);
  EXPECT_THAT(bench_.take(), IsEmpty());
}

TEST_F(PacketPath, DataOf25BytesIsRejectedBeforeAnyFieldIsRead) {
  std::vector<std::uint8_t> data = bytesOf(numbered(1));
  data.resize(25);
  EXPECT_EQ(bench_.hear(data), PacketFate::tooShort);
  EXPECT_EQ(presence().broadcastCount, 1);
  EXPECT_FALSE(presence().transmitterFound);
  EXPECT_FALSE(presence().insideVenue);
  EXPECT_THAT(bench_.take(), IsEmpty());
}

TEST_F(PacketPath, DataOf26BytesIsTaken) {
  EXPECT_EQ(bytesOf(numbered(1)).size(), 26U);
  EXPECT_EQ(bench_.hear(bytesOf(numbered(1))), PacketFate::processed);
}

TEST_F(PacketPath, LongerDataHasItsTransmitterAtTheEnd) {
  allow({"258:9"});
  std::vector<std::uint8_t> data = bytesOf(fromVenueWide(1));
  data.insert(data.end(), {1, 2, 3, 9});
  EXPECT_EQ(bench_.hear(data), PacketFate::processed);
  EXPECT_TRUE(presence().transmitterFound);
  EXPECT_EQ(presence().currentSequence, 1);
}

TEST_F(PacketPath, BytesBehindTheSequenceAreNoPartOfTheLook) {
  std::vector<std::uint8_t> data = bytesOf(numbered(1));
  data.insert(data.end(), {1, 2, 3, 9});
  EXPECT_EQ(bench_.hear(data), PacketFate::processed);
  data = bytesOf(numbered(2));
  data.insert(data.end(), {4, 9});
  EXPECT_EQ(bench_.hear(data), PacketFate::sameBroadcast);
}

TEST_F(PacketPath, AcceptedPacketBringsThePhoneInside) {
  EXPECT_FALSE(bench_.engine().isInsideVenue());
  bench_.hear(numbered(5));
  EXPECT_TRUE(bench_.engine().isInsideVenue());
  EXPECT_EQ(presence().liveSequence, 5);
  EXPECT_EQ(presence().currentSequence, 5);
  EXPECT_EQ(bench_.engine().scanner().currentBroadcast(),
            "09C9010200000064FF0000010000000000000000000000");
}

TEST_F(PacketPath, BroadcastIsStoredBeforeItIsActedOn) {
  std::string stored;
  int active = 0;
  bench_.engine().lightShowStartedCallback() = [&] {
    stored = bench_.engine().scanner().currentBroadcast();
    active = presence().activeFPS;
  };
  bench_.hear(numbered(5));
  EXPECT_EQ(stored.size(), 46U);
  EXPECT_EQ(active, 1);
}

TEST_F(PacketPath, OnlyTheFirstCopyOfASequenceIsProcessed) {
  EXPECT_EQ(bench_.hear(numbered(5, 1)), PacketFate::processed);
  bench_.take();
  EXPECT_EQ(bench_.hear(numbered(5, 3)), PacketFate::staleSequence);
  EXPECT_THAT(bench_.take(), IsEmpty());
  EXPECT_EQ(bench_.screen().currentMode, 1U);
  EXPECT_EQ(presence().fps, 2);
}

TEST_F(PacketPath, NewSequenceWithTheSameLookOnlyMovesTheSequence) {
  bench_.hear(numbered(5));
  bench_.take();
  EXPECT_EQ(bench_.hear(numbered(6)), PacketFate::sameBroadcast);
  EXPECT_EQ(presence().currentSequence, 6);
  EXPECT_EQ(presence().liveSequence, 6);
  EXPECT_EQ(presence().activeFPS, 1);
  EXPECT_EQ(presence().fps, 2);
  EXPECT_THAT(bench_.take(), IsEmpty());
}

TEST_F(PacketPath, OnlyTheTransmitterNumberDiffersIsNoNewCommand) {
  bench_.hear(numbered(5));
  bench_.take();
  EXPECT_EQ(bench_.hear(changed(numbered(6), {{&B::transmitter, 8}})), PacketFate::sameBroadcast);
  EXPECT_THAT(bench_.take(), IsEmpty());
}

TEST_F(PacketPath, SequenceZeroAtFirstIsStaleButAccepted) {
  EXPECT_EQ(bench_.hear(numbered(0)), PacketFate::staleSequence);
  EXPECT_TRUE(presence().insideVenue);
  EXPECT_EQ(presence().fps, 1);
  EXPECT_EQ(bench_.engine().scanner().currentBroadcast(), "");
}

TEST_F(PacketPath, LowerSequenceIsDroppedButLive) {
  reach(500);
  EXPECT_EQ(bench_.hear(numbered(499, 3)), PacketFate::staleSequence);
  EXPECT_EQ(presence().currentSequence, 500);
  EXPECT_EQ(presence().liveSequence, 499);
}

TEST_F(PacketPath, Sequence60001Then100Wraps) {
  reach(60001);
  EXPECT_EQ(bench_.hear(numbered(100, 3)), PacketFate::processed);
  EXPECT_EQ(presence().currentSequence, 100);
}

TEST_F(PacketPath, Sequence60000Then100IsDropped) {
  reach(60000);
  EXPECT_EQ(bench_.hear(numbered(100, 3)), PacketFate::staleSequence);
  EXPECT_EQ(presence().currentSequence, 60000);
}

TEST_F(PacketPath, Sequence59000Then56000IsDropped) {
  reach(59000);
  EXPECT_EQ(bench_.hear(numbered(56000, 3)), PacketFate::staleSequence);
}

TEST_F(PacketPath, WrapEndsBelow56000) {
  reach(60001);
  EXPECT_EQ(bench_.hear(numbered(56000, 3)), PacketFate::staleSequence);
  EXPECT_EQ(bench_.hear(numbered(55999, 3)), PacketFate::processed);
}

TEST_F(PacketPath, SequenceWrapsFromTheLargestToZero) {
  reach(65535);
  EXPECT_EQ(bench_.hear(numbered(0, 3)), PacketFate::processed);
  EXPECT_EQ(presence().currentSequence, 0);
}

TEST_F(PacketPath, VenueWideIsObeyedWhileAlone) {
  EXPECT_EQ(bench_.hear(fromVenueWide(1)), PacketFate::processed);
  EXPECT_FALSE(presence().transmitterFound);
}

TEST_F(PacketPath, VenueWideIsIgnoredOnceAnotherWasHeardInTheRangePeriod) {
  bench_.hear(numbered(1));
  const int accepted = presence().fps;
  EXPECT_EQ(bench_.hear(fromVenueWide(2, 3)), PacketFate::silenced);
  EXPECT_EQ(presence().fps, accepted);
  EXPECT_EQ(presence().liveSequence, 1);
  bench_.runTo(1999);
  EXPECT_EQ(bench_.hear(fromVenueWide(3, 3)), PacketFate::silenced);
  bench_.runTo(2000);
  EXPECT_EQ(bench_.hear(fromVenueWide(4, 3)), PacketFate::processed);
}

TEST_F(PacketPath, StalePacketsSilenceTheVenueWideToo) {
  reach(500);
  bench_.runTo(2000);
  EXPECT_EQ(bench_.hear(numbered(400)), PacketFate::staleSequence);
  EXPECT_EQ(bench_.hear(fromVenueWide(501, 3)), PacketFate::silenced);
}

TEST_F(PacketPath, TransmitterThatIsNotObeyedSilencesTheVenueWideToo) {
  allow({"1:1"});
  EXPECT_EQ(bench_.hear(numbered(1)), PacketFate::notAllowed);
  EXPECT_TRUE(presence().transmitterFound);
  EXPECT_FALSE(presence().insideVenue);
  EXPECT_EQ(presence().fps, 0);
  allow({});
  EXPECT_EQ(bench_.hear(fromVenueWide(2)), PacketFate::silenced);
}

TEST_F(PacketPath, VenueWideAllowedByNameIsAlwaysObeyed) {
  allow({"258:7", "258:255"});
  EXPECT_EQ(bench_.hear(numbered(1)), PacketFate::processed);
  EXPECT_EQ(bench_.hear(fromVenueWide(2, 3)), PacketFate::processed);
}

TEST_F(PacketPath, VenueWideMissingFromTheListIsNotObeyed) {
  allow({"258:7"});
  EXPECT_EQ(bench_.hear(fromVenueWide(1)), PacketFate::notAllowed);
}

TEST_F(PacketPath, OnlyListedKeysAreObeyed) {
  allow({"300:1", "258:7", "2:8", "258:7"});
  EXPECT_EQ(bench_.hear(numbered(1)), PacketFate::processed);
  EXPECT_EQ(bench_.hear(changed(numbered(2, 3), {{&B::transmitter, 8}})), PacketFate::notAllowed);
  EXPECT_EQ(bench_.hear(changed(numbered(3, 3), {{&B::applicationId, 2}})), PacketFate::notAllowed);
  EXPECT_EQ(bench_.hear(changed(numbered(4, 3), {{&B::applicationId, 300}, {&B::transmitter, 1}})),
            PacketFate::processed);
}

TEST_F(PacketPath, ANewListAllowsNothingOfTheOneBefore) {
  allow({"300:1", "258:7"});
  EXPECT_EQ(bench_.hear(numbered(1)), PacketFate::processed);
  allow({"300:1"});
  EXPECT_EQ(bench_.hear(numbered(2, 3)), PacketFate::notAllowed);
  allow({"258:7"});
  EXPECT_EQ(bench_.hear(numbered(3, 3)), PacketFate::processed);
}

TEST_F(PacketPath, TextsThatOnlyLookLikeTheKeyAllowNothing) {
  int sequence = 0;
  for (const char* text :
       {"258:07", " 258:7", "258:7 ", "258 :7", "258: 7", "+258:7", "258:+7", "0258:7", "258:7:1",
        "258:7a", "0x102:7", "258", ":7", "258:", "", "258:263", "65794:7", "258;7"}) {
    SCOPED_TRACE(text);
    allow({text});
    EXPECT_EQ(bench_.hear(numbered(++sequence)), PacketFate::notAllowed);
    EXPECT_THAT(bench_.engine().allowedTransmitterIds(), ElementsAre(text));
  }
  EXPECT_THAT(bench_.take(), IsEmpty());
  allow({" 258:7", "258:7"});
  EXPECT_EQ(bench_.hear(numbered(++sequence)), PacketFate::processed);
}

TEST_F(PacketPath, KeyWithAZeroCharacterAllowsNothing) {
  allow({std::string("258:7\0", 6)});
  EXPECT_EQ(bench_.hear(numbered(1)), PacketFate::notAllowed);
}

TEST_F(PacketPath, KeysOfZeroAndOfTheLargestNumbersAreKnown) {
  allow({"0:0", "65535:254"});
  EXPECT_EQ(bench_.hear(changed(numbered(1), {{&B::applicationId, 0}, {&B::transmitter, 0}})),
            PacketFate::noApplication);
  EXPECT_EQ(bench_.hear(changed(numbered(2), {{&B::applicationId, 65535}, {&B::transmitter, 254}})),
            PacketFate::processed);
}

TEST_F(PacketPath, PacketWithoutAShowIsAcceptedAndRemembered) {
  EXPECT_EQ(bench_.hear(changed(numbered(1), {{&B::applicationId, 0}})), PacketFate::noApplication);
  EXPECT_EQ(bench_.hear(changed(numbered(2), {{&B::applicationId, 0}})), PacketFate::sameBroadcast);
  EXPECT_EQ(bench_.hear(changed(numbered(3), {{&B::syncFlag, 1}})), PacketFate::badSyncFlag);
  EXPECT_TRUE(presence().insideVenue);
  EXPECT_EQ(presence().fps, 3);
  EXPECT_EQ(presence().activeFPS, 2);
}

TEST_F(PacketPath, DiagnosticsCountEveryFate) {
  bench_.hear(Advertisement{});
  bench_.hear(std::vector<std::uint8_t>{1, 2, 3});
  bench_.hear(std::vector<std::uint8_t>{0x09, 0xC9, 3});
  bench_.hear(fromVenueWide(1));
  bench_.hear(numbered(1));
  bench_.hear(fromVenueWide(2, 3));
  bench_.hear(numbered(2));
  bench_.hear(numbered(3, 4));
  const ScanDiagnostics& counts = bench_.engine().diagnostics();
  EXPECT_EQ(counts[PacketFate::noManufacturerData], 1U);
  EXPECT_EQ(counts[PacketFate::otherMaker], 1U);
  EXPECT_EQ(counts[PacketFate::tooShort], 1U);
  EXPECT_EQ(counts[PacketFate::silenced], 1U);
  EXPECT_EQ(counts[PacketFate::staleSequence], 1U);
  EXPECT_EQ(counts[PacketFate::sameBroadcast], 1U);
  EXPECT_EQ(counts[PacketFate::processed], 2U);
  EXPECT_EQ(counts[PacketFate::notAllowed], 0U);
}

TEST_F(PacketPath, AnAllowListThatIsReplacedAllowsNoneOfTheOldOnes) {
  allow({"1:1", "258:7", "300:9"});
  EXPECT_EQ(bench_.hear(numbered(1)), PacketFate::processed);
  allow({"300:9", "2:2"});
  EXPECT_EQ(bench_.hear(numbered(2)), PacketFate::notAllowed);
  allow({"258:8"});
  EXPECT_EQ(bench_.hear(numbered(3)), PacketFate::notAllowed);
  allow({});
  EXPECT_NE(bench_.hear(numbered(4)), PacketFate::notAllowed);
}

}  // namespace
}  // namespace halvora
