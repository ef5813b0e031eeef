// SPDX-License-Identifier: Apache-2.0
#include "seats/ancestor_scroll_views.h"

#include <memory>

#include <gtest/gtest.h>

#include "tests/seats/panel_bench.h"

namespace halvora {
namespace {

class HostScrollView final : public ScrollView {
 public:
  HostScrollView(bool isScrollEnabled, bool bounces)
      : isScrollEnabled_(isScrollEnabled), bounces_(bounces) {}
  bool isScrollEnabled() const override { return isScrollEnabled_; }
  void setScrollEnabled(bool enabled) override { isScrollEnabled_ = enabled; }
  bool bounces() const override { return bounces_; }
  void setBounces(bool bounces) override { bounces_ = bounces; }

 private:
  bool isScrollEnabled_;
  bool bounces_;
};

TEST(AncestorScrollViews, AreHeldStillAndLetGoAsTheyWere) {
  PanelBench bench;
  const auto inner = std::make_shared<HostScrollView>(true, false);
  const auto outer = std::make_shared<HostScrollView>(false, true);
  bench.ancestors = {inner, outer};
  bench.panel().disableAncestorScrollViewsIfNeeded();
  for (const auto& view : {inner, outer}) {
    EXPECT_FALSE(view->isScrollEnabled());
    EXPECT_FALSE(view->bounces());
  }
  bench.panel().restoreAncestorScrollViewsIfNeeded();
  EXPECT_TRUE(inner->isScrollEnabled());
  EXPECT_FALSE(inner->bounces());
  EXPECT_FALSE(outer->isScrollEnabled());
  EXPECT_TRUE(outer->bounces());
}

TEST(AncestorScrollViews, OneThatIsHeldAlreadyKeepsWhatWasNoted) {
  PanelBench bench;
  const auto view = std::make_shared<HostScrollView>(true, true);
  bench.ancestors = {view};
  bench.panel().disableAncestorScrollViewsIfNeeded();
  bench.panel().disableAncestorScrollViewsIfNeeded();
  bench.panel().restoreAncestorScrollViewsIfNeeded();
  EXPECT_TRUE(view->isScrollEnabled());
  EXPECT_TRUE(view->bounces());
}

TEST(AncestorScrollViews, RestoringForgetsThem) {
  PanelBench bench;
  const auto view = std::make_shared<HostScrollView>(true, true);
  bench.ancestors = {view};
  bench.panel().disableAncestorScrollViewsIfNeeded();
  bench.panel().restoreAncestorScrollViewsIfNeeded();
  view->setScrollEnabled(false);
  bench.panel().restoreAncestorScrollViewsIfNeeded();
  EXPECT_FALSE(view->isScrollEnabled());
  bench.panel().disableAncestorScrollViewsIfNeeded();
  bench.panel().restoreAncestorScrollViewsIfNeeded();
  EXPECT_FALSE(view->isScrollEnabled());
  EXPECT_TRUE(view->bounces());
}

TEST(AncestorScrollViews, AreNotKeptAlive) {
  PanelBench bench;
  bench.ancestors = {std::make_shared<HostScrollView>(true, true)};
  const std::weak_ptr<ScrollView> weak = bench.ancestors.front();
  bench.panel().disableAncestorScrollViewsIfNeeded();
  bench.ancestors.clear();
  EXPECT_TRUE(weak.expired());
  bench.panel().restoreAncestorScrollViewsIfNeeded();
}

TEST(AncestorScrollViews, AreLeftAloneByThePanelItself) {
  PanelBench bench;
  const auto view = std::make_shared<HostScrollView>(true, true);
  bench.ancestors = {view};
  bench.tick();
  bench.panel().viewDidLayoutSubviews(300);
  EXPECT_TRUE(view->isScrollEnabled());
  EXPECT_TRUE(view->bounces());
}

TEST(AncestorScrollViews, AFaceMayKnowOfNone) {
  AncestorScrollViews views;
  views.disable({nullptr});
  views.restore();
  PanelBench bench;
  HalvoraStatusViewController faceless(bench.engine(), bench.phone.platform());
  faceless.viewDidLoad();
  faceless.disableAncestorScrollViewsIfNeeded();
  faceless.restoreAncestorScrollViewsIfNeeded();
  EXPECT_EQ(faceless.preferredContentSize(), Size());
}

}  // namespace
}  // namespace halvora
