// SPDX-License-Identifier: Apache-2.0
#include "seats/ancestor_scroll_views.h"

#include <memory>

#include <gtest/gtest.h>

#include "tests/seats/panel_bench.h"

namespace halvora {
namespace {

class HostScrollView final : public ScrollView {
 public:
  HostScrollView(bool isScrollEnabled, bool bounces) : flags_{isScrollEnabled, bounces} {}
  Flags flags() const override { return flags_; }
  void setFlags(Flags flags) override { flags_ = flags; }

 private:
  Flags flags_;
};

TEST(AncestorScrollViews, AreHeldStillAndLetGoAsTheyWere) {
  PanelBench bench;
  const auto inner = std::make_shared<HostScrollView>(true, false);
  const auto outer = std::make_shared<HostScrollView>(false, true);
  bench.ancestors = {inner, outer};
  bench.panel().disableAncestorScrollViewsIfNeeded();
  for (const auto& view : {inner, outer}) {
    EXPECT_FALSE(view->flags().isScrollEnabled);
    EXPECT_FALSE(view->flags().bounces);
  }
  bench.panel().restoreAncestorScrollViewsIfNeeded();
  EXPECT_TRUE(inner->flags().isScrollEnabled);
  EXPECT_FALSE(inner->flags().bounces);
  EXPECT_FALSE(outer->flags().isScrollEnabled);
  EXPECT_TRUE(outer->flags().bounces);
}

TEST(AncestorScrollViews, OneThatIsHeldAlreadyKeepsWhatWasNoted) {
  PanelBench bench;
  const auto view = std::make_shared<HostScrollView>(true, true);
  bench.ancestors = {view};
  bench.panel().disableAncestorScrollViewsIfNeeded();
  bench.panel().disableAncestorScrollViewsIfNeeded();
  bench.panel().restoreAncestorScrollViewsIfNeeded();
  EXPECT_TRUE(view->flags().isScrollEnabled);
  EXPECT_TRUE(view->flags().bounces);
}

TEST(AncestorScrollViews, RestoringForgetsThem) {
  PanelBench bench;
  const auto view = std::make_shared<HostScrollView>(true, true);
  bench.ancestors = {view};
  bench.panel().disableAncestorScrollViewsIfNeeded();
  bench.panel().restoreAncestorScrollViewsIfNeeded();
  view->setFlags({false, true});
  bench.panel().restoreAncestorScrollViewsIfNeeded();
  EXPECT_FALSE(view->flags().isScrollEnabled);
  bench.panel().disableAncestorScrollViewsIfNeeded();
  bench.panel().restoreAncestorScrollViewsIfNeeded();
  EXPECT_FALSE(view->flags().isScrollEnabled);
  EXPECT_TRUE(view->flags().bounces);
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
  EXPECT_TRUE(view->flags().isScrollEnabled);
  EXPECT_TRUE(view->flags().bounces);
}

TEST(AncestorScrollViews, AFaceMayKnowOfNone) {
  AncestorScrollViews views;
  views.disable({nullptr});
  views.restore();
  PanelBench bench;
  PanelController faceless(bench.engine(), bench.phone.platform());
  faceless.viewDidLoad();
  faceless.disableAncestorScrollViewsIfNeeded();
  faceless.restoreAncestorScrollViewsIfNeeded();
  EXPECT_EQ(faceless.preferredContentSize(), Size());
}

}  // namespace
}  // namespace halvora
