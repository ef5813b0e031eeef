// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/impl/picker_rows.h"

#include <QStringList>
#include <algorithm>
#include <limits>
#include <utility>

#include "faces/qt/impl/seat_looks.h"

namespace halvora {

namespace {

// How well a title answers a filter; 0 for not at all. "Row 12" means row 12 to who types "12",
// even below a "Row 112".
int rankOf(const QString& title, const QString& filter) {
  if (!title.contains(filter, Qt::CaseInsensitive)) return 0;
  if (title.size() == filter.size()) return 4;
  if (title.split(QLatin1Char(' ')).contains(filter, Qt::CaseInsensitive)) return 3;
  return title.startsWith(filter, Qt::CaseInsensitive) ? 2 : 1;
}

}  // namespace

int PickerRows::rowCount(const QModelIndex& parent) const {
  if (parent.isValid() || !wizard_) return 0;
  const std::size_t count = filter_.isEmpty() ? wizard_->numberOfPickerRows() : matches_.size();
  constexpr std::size_t kMost = std::numeric_limits<int>::max();
  return static_cast<int>(std::min(count, kMost));
}

QVariant PickerRows::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  if (role == kTitle) return titleOf(rowAt(index.row()));
  return role == kDetail ? QVariant(detailOf(rowAt(index.row()))) : QVariant();
}

QHash<int, QByteArray> PickerRows::roleNames() const {
  return {{kTitle, "title"}, {kDetail, "detail"}};
}

void PickerRows::reload(Wizard wizard) {
  beginResetModel();
  wizard_ = std::move(wizard);
  filter_.clear();
  matches_.clear();
  endResetModel();
}

void PickerRows::setFilter(const QString& filter) {
  if (filter == filter_ || !wizard_) return;
  beginResetModel();
  findMatches(filter);
  filter_ = filter;
  endResetModel();
}

// Whoever goes on typing can only lose rows, so only those that are left are looked at.
void PickerRows::findMatches(const QString& filter) {
  const bool isNarrower = !filter_.isEmpty() && filter.startsWith(filter_, Qt::CaseInsensitive);
  std::vector<std::int64_t> matches{0};
  std::int64_t best = 0;
  int bestRank = 0;
  const auto look = [&](std::int64_t row) {
    const int rank = std::max(rankOf(titleOf(row), filter), rankOf(detailOf(row), filter));
    if (rank == 0) return;
    matches.push_back(row);
    if (rank > bestRank) {
      best = row;
      bestRank = rank;
    }
  };
  if (isNarrower) {
    for (std::size_t at = 1; at < matches_.size(); ++at) look(matches_[at]);
  } else if (!filter.isEmpty()) {
    const auto count = static_cast<std::int64_t>(wizard_->numberOfPickerRows());
    for (std::int64_t row = 1; row < count; ++row) look(row);
  }
  matches_ = std::move(matches);
  bestMatch_ = best;
  bestRank_ = bestRank;
}

std::int64_t PickerRows::rowAt(int index) const {
  if (index < 0 || index >= rowCount()) return -1;
  return filter_.isEmpty() ? index : matches_[static_cast<std::size_t>(index)];
}

int PickerRows::indexOf(std::int64_t row) const {
  if (filter_.isEmpty()) return row >= 0 && row < rowCount() ? static_cast<int>(row) : -1;
  const auto found = std::lower_bound(matches_.begin(), matches_.end(), row);
  if (found == matches_.end() || *found != row) return -1;
  return static_cast<int>(found - matches_.begin());
}

QString PickerRows::detailOf(std::int64_t row) const {
  return wizard_ ? textFrom(wizard_->detailForPickerRow(row)) : QString();
}

QString PickerRows::titleOf(std::int64_t row) const {
  return wizard_ ? textFrom(wizard_->titleForPickerRow(row)) : QString();
}

}  // namespace halvora
