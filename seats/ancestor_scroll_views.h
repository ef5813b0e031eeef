// SPDX-License-Identifier: Apache-2.0
// Holds the scroll views that a panel lies in still, and lets them go again as they were. The
// host's views may go at any time. Owned by the status panel; main thread.
#pragma once

#include <memory>
#include <vector>

namespace halvora {

/// A scroll view of the host, as a face shows it.
class ScrollView {
 public:
  virtual ~ScrollView() = default;
  virtual bool isScrollEnabled() const = 0;
  virtual void setScrollEnabled(bool enabled) = 0;
  virtual bool bounces() const = 0;
  virtual void setBounces(bool bounces) = 0;
};

class AncestorScrollViews {
 public:
  /// Those that are held already keep what was noted of them.
  void disable(const std::vector<std::shared_ptr<ScrollView>>& ancestors);
  void restore();

 private:
  struct Saved {
    std::weak_ptr<ScrollView> view;
    bool isScrollEnabled;
    bool bounces;
  };
  bool isSaved(const std::shared_ptr<ScrollView>& view) const;

  std::vector<Saved> saved_;
};

}  // namespace halvora
