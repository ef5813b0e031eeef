// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/radio_managers.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace halvora {
namespace {

using testing::IsEmpty;

class RadioManagersTest : public testing::Test {
 protected:
  struct Manager {
    Manager(RadioManagers<Manager>& radio, char letter) : all(radio), name(letter) {
      all.add(*this);
    }
    ~Manager() { all.remove(*this); }
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;
    bool isScanning() const { return isOn; }

    RadioManagers<Manager>& all;
    char name;
    bool isOn = false;
  };

  RadioManagersTest() {
    for (const char name : {'a', 'b', 'c', 'd'}) make(name);
  }
  void make(char name) { owned_.push_back(std::make_unique<Manager>(managers_, name)); }
  void end(char name) {
    std::erase_if(owned_, [name](const auto& its) { return its->name == name; });
  }
  /// Who was told, while `meanwhile` is done as each of them is.
  std::string told(const std::function<void(char)>& meanwhile = {}) {
    std::string names;
    managers_.forEach([&](const Manager& manager) {
      const char name = manager.name;
      names += name;
      if (meanwhile) meanwhile(name);
    });
    return names;
  }

  RadioManagers<Manager> managers_;
  std::vector<std::unique_ptr<Manager>> owned_;
};

TEST_F(RadioManagersTest, AreToldInTheOrderOfTheirMaking) {
  EXPECT_EQ(told(), "abcd");
  end('b');
  EXPECT_EQ(told(), "acd");
}

TEST_F(RadioManagersTest, ThatGoMeanwhileAreLeftOutAndNobodyElseIs) {
  EXPECT_EQ(told([this](char name) {
              if (name != 'b') return;
              end('a');
              end('b');
              end('c');
            }),
            "abd");
  EXPECT_EQ(told(), "d");
}

TEST_F(RadioManagersTest, ThatComeMeanwhileWaitForTheNextTime) {
  EXPECT_EQ(told([this](char name) {
              if (name == 'a') make('e');
            }),
            "abcd");
  EXPECT_EQ(told(), "abcde");
}

TEST_F(RadioManagersTest, MayBeToldWhileTheyAreTold) {
  std::string within;
  EXPECT_EQ(told([&](char name) {
              if (name == 'b') end('a');
              if (name == 'b')
                within = told([this](char other) {
                  if (other == 'c') end('c');
                });
            }),
            "abd");
  EXPECT_EQ(within, "bcd");
  EXPECT_EQ(told(), "bd");
}

TEST_F(RadioManagersTest, CountWhoIsThereStill) {
  EXPECT_TRUE(managers_.isAny());
  EXPECT_FALSE(managers_.isAnyScanning());
  owned_.back()->isOn = true;
  EXPECT_TRUE(managers_.isAnyScanning());
  told([this](char name) {
    end(name);
    EXPECT_EQ(managers_.isAny(), name != 'd');
    EXPECT_EQ(managers_.isAnyScanning(), name != 'd');
  });
  EXPECT_THAT(told(), IsEmpty());
}

}  // namespace
}  // namespace halvora
