// SPDX-License-Identifier: Apache-2.0
// What there is to choose from on the console, as lists for QML: an entry has a number and a name,
// a palette its colours too. Read once from the demo's assets. Main thread.
#pragma once

#include <QVariantList>
#include <string>

#include "halvora/platform/json.h"

namespace halvora {

QVariantList modeChoices();
QVariantList torchModeChoices();
QVariantList vibrationChoices();
/// The colours that a show needs most.
QVariantList swatches();

/// Begins with 0, the packet's own colour. Without a readable file that is all.
QVariantList paletteChoices(const std::string& assets, const JsonReader& json);
/// Begins with 0, no picture.
QVariantList goboChoices(const std::string& assets);

QVariantMap choice(int number, const QString& name);

/// The venue that the assets are of: the demo's, else the one with the lowest number, else the
/// demo's all the same.
int venueOf(const std::string& assets);

}  // namespace halvora
