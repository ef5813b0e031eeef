// SPDX-License-Identifier: Apache-2.0
#include "adapters/qt/qt_descriptors.h"

#include <functional>
#include <new>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <unistd.h>

#include "adapters/qt/qt_run_loop.h"
#include "tests/faces/qt/event_wait.h"

namespace halvora {
namespace {

struct QtDescriptorsTest : testing::Test {
  QtDescriptorsTest() { EXPECT_EQ(pipe(ends), 0); }
  ~QtDescriptorsTest() override {
    close(ends[0]);
    close(ends[1]);
  }
  void runUntil(const std::function<bool()>& isDone) { letQtWorkUntil(isDone); }
  // Long enough for whatever is ready to be told.
  void runATurn() {
    const TimerId last = loop.after(milliseconds(1), [] {});
    runUntil([&] { return !loop.isPending(last); });
  }
  void put(char byte) { EXPECT_EQ(write(ends[1], &byte, 1), 1); }
  void take() {
    char byte = 0;
    EXPECT_EQ(read(ends[0], &byte, 1), 1);
    ran += byte;
  }
  WatchId watchPipe() {
    return descriptors.watch(ends[0], DescriptorEvents::readable, [this] { take(); });
  }

  int ends[2] = {-1, -1};
  std::string ran;
  QtRunLoop loop;
  QtDescriptors descriptors;
};

TEST_F(QtDescriptorsTest, WatchesForAsLongAsThereIsSomethingToRead) {
  const DescriptorWatch watch(descriptors, watchPipe());
  put('a');
  put('b');
  runUntil([&] { return ran == "ab"; });
  EXPECT_EQ(ran, "ab");
}

TEST_F(QtDescriptorsTest, WhatATaskThrowsNeverReachesQt) {
  bool hasThrown = false;
  const DescriptorWatch watch(descriptors,
                              descriptors.watch(ends[0], DescriptorEvents::readable, [&] {
                                if (!std::exchange(hasThrown, true)) throw std::bad_alloc();
                                take();
                              }));
  put('a');
  runUntil([&] { return ran == "a"; });
  EXPECT_EQ(descriptors.failures(), 1U);
}

TEST_F(QtDescriptorsTest, WatchesForRoomToWrite) {
  DescriptorWatch watch(descriptors,
                        descriptors.watch(ends[1], DescriptorEvents::both, [this] { ran += 'w'; }));
  runUntil([&] { return ran.size() >= 2; });
  watch.end();
  ran.clear();
  runATurn();
  EXPECT_EQ(ran, "");
}

TEST_F(QtDescriptorsTest, AForgottenWatchIsSilent) {
  descriptors.forget(watchPipe());
  put('a');
  runATurn();
  EXPECT_EQ(ran, "");
}

TEST_F(QtDescriptorsTest, ATaskMayForgetItsOwnWatchAndMakeAnother) {
  DescriptorWatch watch;
  watch = {descriptors, descriptors.watch(ends[0], DescriptorEvents::readable, [&] {
             take();
             watch = {descriptors, watchPipe()};
           })};
  put('a');
  put('b');
  runUntil([&] { return ran == "ab"; });
  EXPECT_EQ(ran, "ab");
}

}  // namespace
}  // namespace halvora
