// SPDX-License-Identifier: Apache-2.0
// The rows of the seat selector's picker as a list model: each title is asked for when it is drawn,
// so a list of a hundred thousand costs what is seen of it. A filter leaves out rows; the wizard
// knows nothing of it and is told real rows. Owned by SeatWizard; main thread.
#pragma once

#include <QAbstractListModel>
#include <QString>
#include <cstdint>
#include <memory>
#include <vector>

#include <qqmlregistration.h>

#include "halvora/wizard.h"

namespace halvora {

class PickerRows : public QAbstractListModel {
  Q_OBJECT
  QML_ANONYMOUS

  enum Role { kTitle = Qt::DisplayRole, kDetail = Qt::UserRole };

 public:
  using Wizard = std::shared_ptr<const HalvoraSeatSelectorViewController>;

  using QAbstractListModel::QAbstractListModel;

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

  /// Reads the rows of the wizard's current step anew, without a filter. Null for no rows.
  void reload(Wizard wizard);
  /// Leaves the placeholder and the rows whose title or second line contains the text, in any case.
  void setFilter(const QString& filter);
  const QString& filter() const { return filter_; }

  /// The wizard's row at an index of this list, and the other way round; -1 for none.
  std::int64_t rowAt(int index) const;
  int indexOf(std::int64_t row) const;
  /// The row that the filter means most likely: equal to it, else with a word that is, else
  /// beginning with it, else the first one; the placeholder, row 0, where no row is left.
  std::int64_t bestMatch() const { return bestMatch_; }
  /// How surely it is meant: 4 equal, 3 a word of it, 2 its beginning, 1 in its middle, 0 none.
  int bestRank() const { return bestRank_; }
  QString titleOf(std::int64_t row) const;
  QString detailOf(std::int64_t row) const;

 private:
  void findMatches(const QString& filter);

  Wizard wizard_;
  QString filter_;
  /// With a filter: the placeholder's row and those that match, ascending.
  std::vector<std::int64_t> matches_;
  std::int64_t bestMatch_ = 0;
  int bestRank_ = 0;
};

}  // namespace halvora
