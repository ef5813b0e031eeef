// SPDX-License-Identifier: Apache-2.0
#include <QColor>

#include "apps/console/cue_desk.h"
#include "venue/show/cue_values.h"
#include "venue/show/show_words.h"

namespace halvora {

namespace {

QString modeOf(const Broadcast& packet) {
  return packet.mode < kModeNames.size() ? QString::fromLatin1(kModeNames[packet.mode])
                                         : QString::number(packet.mode);
}

// The one colour that stands for a look.
QColor colourOf(const Broadcast& packet, const std::vector<NamedPalette>& palettes) {
  for (const NamedPalette& palette : palettes) {
    if (packet.paletteId == 0 || palette.id != packet.paletteId) continue;
    for (const std::string& colour : palette.colours) {
      if (const QColor known(QString::fromStdString(colour)); known.isValid()) return known;
    }
  }
  return {packet.red, packet.green, packet.blue};
}

}  // namespace

void CueRows::show(const CueList* list, const std::vector<NamedPalette>& palettes) {
  beginResetModel();
  list_ = list;
  palettes_ = &palettes;
  endResetModel();
}

int CueRows::rowCount(const QModelIndex& parent) const {
  return parent.isValid() || list_ == nullptr ? 0 : static_cast<int>(list_->cues.size());
}

QVariant CueRows::data(const QModelIndex& index, int role) const {
  if (index.row() < 0 || index.row() >= rowCount({})) return {};
  const Cue& cue = list_->cues[static_cast<std::size_t>(index.row())];
  const Broadcast& packet = cue.look.packet;
  switch (role) {
    case kName:
      return QString::fromStdString(cue.name);
    case kTime:
      return cue.at ? QString::fromStdString(showTimeText(*cue.at)) : QStringLiteral("GO");
    case kLook:
      return cue.look.map ? QStringLiteral("Map %1").arg(cue.look.map->id) : modeOf(packet);
    case kColour:
      return colourOf(packet, *palettes_);
    default:
      return {};
  }
}

QHash<int, QByteArray> CueRows::roleNames() const {
  return {{kName, "name"}, {kTime, "time"}, {kLook, "look"}, {kColour, "colour"}};
}

}  // namespace halvora
