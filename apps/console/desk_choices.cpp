// SPDX-License-Identifier: Apache-2.0
#include "apps/console/desk_choices.h"

#include <QColor>
#include <QString>
#include <QVariantMap>
#include <charconv>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>

#include "apps/console/show_desk.h"
#include "text/asset_paths.h"
#include "venue/show/palette_names.h"
#include "venue/show/show_words.h"

namespace halvora {

namespace {

constexpr const char* kSwatches[] = {"#ffffff", "#ffb46b", "#ff2d20", "#ff7a00",
                                     "#ffd400", "#2bff4f", "#00e5ff", "#1f5bff",
                                     "#8a2bff", "#ff2bd6", "#ff6f91", "#000000"};

template <std::size_t kCount>
QVariantList choicesOf(const std::array<const char*, kCount>& names) {
  QVariantList choices;
  for (const char* name : names) {
    choices.append(choice(static_cast<int>(choices.size()), QString::fromLatin1(name)));
  }
  return choices;
}

}  // namespace

QVariantMap choice(int number, const QString& name) {
  return {{QStringLiteral("number"), number}, {QStringLiteral("name"), name}};
}

// Mode 0 gives the phones back to their hosts' pages, which is not dark: blackout is another
// button.
QVariantList modeChoices() {
  QVariantList choices = choicesOf(kModeNames);
  choices.front() = choice(0, QStringLiteral("End show"));
  return choices;
}
QVariantList torchModeChoices() { return choicesOf(kTorchModeNames); }
QVariantList vibrationChoices() { return choicesOf(kVibrationNames); }

QVariantList swatches() {
  QVariantList colours;
  for (const char* swatch : kSwatches) colours.append(QColor(swatch));
  return colours;
}

QVariantList paletteChoices(const std::string& assets, const JsonReader& json) {
  QVariantMap own = choice(0, QStringLiteral("Own colour"));
  own.insert(QStringLiteral("colours"), QVariantList());
  QVariantList choices{own};
  for (const NamedPalette& palette : readPaletteNames(assets, json)) {
    QVariantMap entry = choice(static_cast<int>(palette.id), QString::fromStdString(palette.name));
    QVariantList colours;
    for (const std::string& colour : palette.colours) {
      colours.append(QColor(QString::fromStdString(colour)));
    }
    entry.insert(QStringLiteral("colours"), colours);
    choices.append(entry);
  }
  return choices;
}

int venueOf(const std::string& assets) {
  constexpr std::string_view kPrefix = "Venue-";
  std::set<int> numbers;
  std::error_code error;
  for (const auto& folder : std::filesystem::directory_iterator(assets + "/" + kMapFolder, error)) {
    const std::string name = folder.path().filename().string();
    int number = 0;
    if (!name.starts_with(kPrefix)) continue;
    std::from_chars(name.data() + kPrefix.size(), name.data() + name.size(), number);
    if (number >= 1 && number <= 0xFF) numbers.insert(number);
  }
  return numbers.empty() || numbers.contains(kDemoVenue) ? kDemoVenue : *numbers.begin();
}

QVariantList goboChoices(const std::string& assets) {
  std::set<int> numbers;
  std::error_code error;
  for (const auto& file : std::filesystem::directory_iterator(assets + "/" + kGoboFolder, error)) {
    const std::string name = file.path().filename().string();
    int number = 0;
    std::from_chars(name.data(), name.data() + name.size(), number);
    if (number >= 1 && number <= 0xFF) numbers.insert(number);
  }
  QVariantList choices{choice(0, QString::fromLatin1(kNoGoboName))};
  for (const int number : numbers) choices.append(choice(number, QString::number(number)));
  return choices;
}

}  // namespace halvora
