// SPDX-License-Identifier: Apache-2.0
// How an edited show gets back to its file: whole, and never over what is not known here.
#include <QSaveFile>
#include <utility>

#include "adapters/standard/standard_files.h"
#include "apps/console/cue_desk.h"

namespace halvora {

namespace {

QString firstOf(const std::vector<std::string>& comments) {
  QString shown = QString::fromStdString(comments.front());
  const auto more = comments.size() - 1;
  return more == 0 ? shown : shown + QObject::tr(" and %1 more").arg(more);
}

}  // namespace

void CueDesk::save() {
  if (!cues_) return say(tr("No show is open."));
  const auto onDisk = readFile(opened_.toStdString(), kLargestCueList);
  const bool isKnown = onDisk == saved_;
  const bool losesComments = !cues_->lostComments().empty();
  const QString question =
      QStringLiteral("save %1 %2").arg(isKnown).arg(cues_->lostComments().size());
  if ((!isKnown || losesComments) && !isAskedAgain(question)) {
    return say(
        !isKnown
            ? tr("%1 was changed or removed by somebody else since it was opened. Press Save once "
                 "more to put this show in its place.")
                  .arg(opened_)
            : tr("Comments that stood within what was changed are not kept: %1. Press Save once "
                 "more to save without them.")
                  .arg(firstOf(cues_->lostComments())));
  }
  const std::string& text = cues_->text();
  QSaveFile file(opened_);
  const bool isSaved = file.open(QIODevice::WriteOnly) &&
                       file.write(text.data(), static_cast<qint64>(text.size())) ==
                           static_cast<qint64>(text.size()) &&
                       file.commit();
  if (!isSaved) return say(tr("%1 cannot be written: %2").arg(opened_, file.errorString()));
  saved_ = text;
  cues_->forgetLostComments();
  say(tr("Saved %1").arg(opened_));
  emit changed();
}

}  // namespace halvora
